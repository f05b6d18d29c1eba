#include "tavlen/foundation/objc/ObjCRuntime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "tavlen/foundation/objc/ObjCBlock.h"
#include "tests/support/StandIns.h"

namespace tavlen {
namespace {

using namespace ObjCRuntime;
using namespace std::string_literals;

TEST(ObjCRuntime, SendsMessagesOfEveryTypeAndReleases) {
  struct Range {
    unsigned long location, length;
  };
  const StandIns standIns;
  const id nothing = nullptr;
  EXPECT_EQ(send<double>(nothing, "half:", 3.0), 0);
  EXPECT_EQ(send<Range>(nothing, "rangeFrom:length:", 1UL, 2UL).length, 0U);
  EXPECT_FALSE(isKindOf(nothing, "NSObject") || respondsTo(nothing, "description"));
  const auto live = [] { return send<int>(classNamed("RuntimeProbe"), "live"); };
  {
    const AutoreleasePool pool;
    const id probe = send(classNamed("RuntimeProbe"), "probe");
    EXPECT_EQ(send<double>(probe, "half:", 3.0), 1.5);
    EXPECT_EQ(send<Range>(probe, "rangeFrom:length:", 5UL, 1UL << 40).length, 1UL << 40);
    EXPECT_TRUE(isKindOf(probe, "NSObject"));
    EXPECT_FALSE(isKindOf(probe, "NSString") || isKindOf(probe, "NoSuchClass"));
    EXPECT_TRUE(respondsTo(probe, "half:"));
    EXPECT_FALSE(respondsTo(probe, "half"));
    EXPECT_EQ(live(), 1);
  }
  EXPECT_EQ(live(), 0);
}

TEST(ObjCRuntime, TextsKeepTheirBytes) {
  const StandIns standIns;
  const AutoreleasePool pool;
  for (const std::string& each : {""s, "caf\xC3\xA9"s, "a\0b"s, "\xF0\x9F\x98\x80"s}) {
    EXPECT_EQ(text(makeString(each)), each);
  }
  EXPECT_EQ(makeString("caf\xE9"), nullptr);
  const id probe = send(classNamed("RuntimeProbe"), "probe");
  EXPECT_EQ(text(probe), std::nullopt);
  std::optional<std::string> lone;
  runGuarded([&] { lone = text(send(probe, "loneSurrogate")); });
  EXPECT_EQ(lone, std::nullopt);
}

TEST(ObjCRuntime, DropsForeignExceptionsOnly) {
  const StandIns standIns;
  const AutoreleasePool pool;
  const id probe = send(classNamed("RuntimeProbe"), "probe");
  bool reachedEnd = false;
  const auto raise = [&](const char* selector) {
    return runGuarded([&] {
      const AutoreleasePool inner;
      send<void>(probe, selector);
      reachedEnd = true;
    });
  };
  EXPECT_FALSE(raise("raise"));
  EXPECT_FALSE(raise("noSuchMethod"));
  EXPECT_FALSE(reachedEnd);
  EXPECT_TRUE(raise("description"));
  EXPECT_THROW(runGuarded([] { throw std::runtime_error("ours"); }), std::runtime_error);
}

TEST(ObjCBlock, IsCalledAfterItsObjectIsGoneAndFreedOnce) {
  const StandIns standIns(
      "<key>launchErrors</key><dict><key>com.example.bad</key><string>E</string></dict>");
  const AutoreleasePool pool;
  const id service = send(classNamed("FBSSystemService"), "sharedService");
  for (const char* app : {"com.example.good", "com.example.bad"}) {
    std::weak_ptr<std::promise<bool>> captured;
    std::future<bool> failed;
    {
      const auto answer = std::make_shared<std::promise<bool>>();
      captured = answer;
      failed = answer->get_future();
      const ObjCBlock block =
          makeBlock<void(id)>([answer](id error) { answer->set_value(error != nullptr); });
      send<void>(service, "openApplication:options:withResult:", makeString(app), id{},
                 block.get());
    }
    EXPECT_EQ(failed.get(), app == "com.example.bad"s);
    // The caller's thread releases its copy right after the call.
    for (int i = 0; i < 1000 && !captured.expired(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(captured.expired());
  }
}

TEST(ObjCBlock, FreesWhatNobodyCalls) {
  const auto state = std::make_shared<int>(7);
  {
    const ObjCBlock block = makeBlock<int(int)>([state](int addend) { return *state + addend; });
    EXPECT_EQ(state.use_count(), 2);
    struct Layout {
      void* isa;
      int flags, reserved;
      int (*invoke)(void*, int);
    };
    EXPECT_EQ(static_cast<Layout*>(block.get())->invoke(block.get(), 3), 10);
  }
  EXPECT_EQ(state.use_count(), 1);
}

}  // namespace
}  // namespace tavlen
