#include "tavlen/foundation/objc/ObjCRuntime.h"

#include <objc/runtime.h>

#include <chrono>
#include <future>
#include <iterator>
#include <set>
#include <thread>

#include "tavlen/foundation/objc/ObjCBlock.h"
#include "tavlen/foundation/objc/detail/EncodedSignature.h"
#include "tavlen/foundation/objc/detail/PlatformSignature.h"
#include "tavlen/foundation/objc/detail/TypeLayout.h"
#include "tests/support/StandIns.h"
#include "tests/support/TableFile.h"

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

TEST(ObjCRuntime, PassesOurExceptionsOn) {
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

using namespace std::literals;

std::string repeated(std::string_view text, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

std::vector<std::string> typesOf(const MethodSignature& signature) {
  std::vector<std::string> types{signature.methodReturnType()};
  for (std::size_t i = 0; i < signature.numberOfArguments(); ++i) {
    types.push_back(signature.getArgumentTypeAtIndex(i));
  }
  return types;
}

TEST(EncodedSignature, ReadsTypesWithoutTheirOffsets) {
  for (const auto& row : tableFrom("signatures.txt", 3)) {
    const auto signature = encodedSignature(row[0]);
    ASSERT_NE(signature, nullptr) << row[0];
    EXPECT_EQ(std::to_string(signature->methodReturnLength()), row[1]) << row[0];
    EXPECT_EQ(signature->isOneway(), row[2].starts_with('V'));
    EXPECT_EQ(typesOf(*signature), std::vector(row.begin() + 2, row.end()));
    EXPECT_THROW(signature->getArgumentTypeAtIndex(row.size() - 3), std::out_of_range);
  }
  EXPECT_TRUE(encodedSignature("rVv@:")->isOneway());
  EXPECT_FALSE(encodedSignature("v@V@:")->isOneway());
  const auto signature = encodedSignature("d24@0:8i16");
  EXPECT_EQ(signature->description(), "<MethodSignature: d@:i>");
  EXPECT_EQ(signature->debugDescription(),
            "<MethodSignature: d@:i; arguments: 3, frame: 224 bytes, result: 8 bytes>");
}

TEST(EncodedSignature, LengthsAreThoseOfArm64) {
  for (const auto& row : tableFrom("lengths.txt", 2)) {
    for (std::size_t i = 1; i < row.size(); ++i) {
      const auto signature = encodedSignature(row[i] + "@:");
      ASSERT_NE(signature, nullptr) << row[i];
      EXPECT_EQ(std::to_string(signature->methodReturnLength()), row[0]) << row[i];
    }
  }
}

TEST(EncodedSignature, RefusesWhatThePlatformRefuses) {
  for (const std::string& encoding : words("(U=if)@: v@:(U=if) b3@: {S=b3b5}@: v@:{A={S=ib1}} "
                                           "{S=[2b1]}@: {S}@: {S=i{T}}@: ?@: v@:? "
                                           "{S=?}@: zz v@:Z r ^ v@:^ 16 v@:\"A\"")) {
    EXPECT_EQ(encodedSignature(encoding), nullptr) << encoding;
  }
  for (const std::string_view encoding : {""sv, "v@:\0"sv, "v\0@:"sv}) {
    EXPECT_EQ(encodedSignature(encoding), nullptr) << encoding;
  }
}

TEST(EncodedSignature, HostileTextsAreRefused) {
  std::vector<std::string> rows = words(
      "{ {A {A= {A=i {A=i] {A={B=i} {(A} {A=\"a\"i\"b} {A=\"a\"} {A=\"a\"i#i} [ [4 [4i [4i) [i] [] "
      "[-1i] @\"A @?< @?<v ( (U= ^^^ } v@:} [99999999999999999999i] [18446744073709551615q] "
      "[4611686018427387905[4i]] {A=[281474976710656c]c}");
  // Quadratic work on these would take as long as a test may.
  constexpr std::size_t kMany = 250'000;
  for (const char* piece : {"{", "{A=", "[", "[1", "(", "^", "r", "@?<", "<", "{A=\"a\"@\"b\""}) {
    rows.push_back(repeated(piece, kMany));
  }
  rows.push_back(repeated("{", 1 << 20U));
  rows.push_back(repeated("@\"", kMany + 1));
  rows.push_back(repeated("{<", kMany) + "}");
  rows.push_back(repeated("{A=", kMany) + repeated("}", kMany));
  rows.push_back(repeated("[9", 20) + "i" + repeated("]", 20));
  for (const std::string& each : rows) {
    for (const std::string& encoding : {each, "v@:" + each}) {
      EXPECT_EQ(encodedSignature(encoding), nullptr) << encoding.substr(0, 40);
    }
  }
  EXPECT_EQ(encodedSignature(repeated("@", kMany))->numberOfArguments(), kMany - 1);
  EXPECT_EQ(encodedSignature("v" + repeated("^", kMany) + "v")->numberOfArguments(), 1U);
  EXPECT_EQ(encodedSignature("{A=" + repeated("c", kMany) + "}")->methodReturnLength(), kMany);
  EXPECT_EQ(layoutOfType(repeated("{A=", TypeLayout::kDeepest) + "i" +
                         repeated("}", TypeLayout::kDeepest))
                ->size,
            4U);
}

// In a process of its own, in which nothing has loaded a class.
TEST(PlatformSignatureDeathTest, ThereIsNoneWithoutItsClass) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(platformSignature("v@:") == nullptr ? 0 : 1), testing::ExitedWithCode(0),
              "");
}

TEST(PlatformSignature, AnswersWhatTheObjectDoes) {
  const StandIns standIns;
  const auto signature = platformSignature("Vv32@0:8r*16d24");
  ASSERT_NE(signature, nullptr);
  EXPECT_EQ(typesOf(*signature), (std::vector<std::string>{"Vv", "@", ":", "r*", "d"}));
  EXPECT_TRUE(signature->isOneway());
  EXPECT_EQ(platformSignature("@24@0:8@16")->methodReturnLength(), 8U);
  EXPECT_TRUE(signature->description().starts_with("<NSMethodSignature"))
      << signature->description();
  EXPECT_NE(signature->debugDescription(), "");
  EXPECT_THROW(signature->getArgumentTypeAtIndex(4), std::out_of_range);
  EXPECT_EQ(platformSignature(""), nullptr);
  EXPECT_EQ(platformSignature("v@:\0@"sv), nullptr);
  // GNUstep's reader runs out of stack on each of these.
  for (const std::string_view nest : {"{A="sv, "(A="sv, "[1"sv, "^"sv, "r"sv, "^{"sv}) {
    std::string encoding;
    for (int i = 0; i < 250'000; ++i) encoding += nest;
    EXPECT_EQ(platformSignature(encoding + "i"), nullptr) << nest;
  }
  EXPECT_NE(platformSignature("^^^^^^^^^^^^^^^vrnNoORVi^{A<B<C>>=}"), nullptr);
}

}  // namespace
}  // namespace tavlen
