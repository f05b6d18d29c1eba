#include "tavlen/introspection/remote/RemoteClassParser.h"

#include <gmock/gmock.h>

#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/introspection/classes/DynamicClassParser.h"
#include "tavlen/introspection/remote/TessaloopInterface.h"
#include "tavlen/introspection/remote/detail/RemoteDump.h"
#include "tests/introspection/remote/DumpTest.h"

#if defined(TAVLEN_FINDS_LEAKS) || defined(__SANITIZE_THREAD__)
#define TAVLEN_SANITIZED
#endif

namespace tavlen {
namespace {
using Classes = ClassParser::Classes;

/// The whole way: a launch that starts the reference agent, its reports, its archive.
class RemoteClassParserTest : public DumpTest {
 protected:
  /// As RemoteClassParser does, at another port and without its pause.
  static Classes dump(TessaloopClient& client, const Executable& executable) {
    return dumpRemotely(executable, nullptr,
                        [&](const std::string& bundleID, const std::string& image, bool isMain,
                            const std::function<void(double)>& progress) {
                          return client.invoke(bundleID, image, isMain, progress);
                        });
  }

  Executable program_{ipa_, appDir(), "Dumped", true};
};

long entries(const char* folder) {
  const fs::directory_iterator entry(folder);
  return std::distance(begin(entry), end(entry));
}

TEST_F(RemoteClassParserTest, DumpsAnImageOfAnApp) {
  const std::uint16_t port = freePort();
  const StandIns standIns(script(port));
  TessaloopClient client(quick(port));
  const Classes classes = dump(client, image_);
  ASSERT_EQ(classes.size(), 1U);
  EXPECT_EQ(classes.front()->name, "DumpedProbe");
  EXPECT_EQ(classes.front()->supercls, std::nullopt);
  const ObjCClass::Methods& methods = classes.front()->methods;
  ASSERT_GE(methods.size(), 2U);
  EXPECT_EQ(*methods.front(), ObjCMethod("add:to:", "i24@0:8i16i20", false));
  EXPECT_THAT(methods,
              testing::Contains(testing::Pointee(ObjCMethod("half:", "d24@0:8d16", true))));
  std::vector<std::string> names;
  for (const auto& cls : dump(client, program_)) names.push_back(cls->name);
  EXPECT_THAT(names, testing::UnorderedElementsAre("SampleOfProgram", "SampleBelowProgram"));
  EXPECT_EQ(archiveFolders(), 0);
}

TEST_F(RemoteClassParserTest, FailsWhereTheAgentFails) {
  const std::uint16_t port = freePort();
  const StandIns standIns(script(port));
  TessaloopClient client(quick(port));
  fs::remove(image_.path());
  EXPECT_THROW(dump(client, image_), RemoteClassParser::Error);
  write("Applications/Dumped.app/Frameworks/Probe.dylib", "no image");
  EXPECT_THROW(dump(client, image_), RemoteClassParser::Error);
  EXPECT_EQ(archiveFolders(), 0);
}

TEST_F(RemoteClassParserTest, LeavesNothingAfterManyRequests) {
#ifdef TAVLEN_SANITIZED
  constexpr int kRequests = 60;
#else
  constexpr int kRequests = 200;
#endif
  constexpr long kKept = 8;
  const std::uint16_t port = freePort();
  const StandIns standIns(script(port));
  write("Applications/Silent.app/Info.plist", appPlist(kSilentApp, "Silent"));
  const auto silentIPA = IPA::withAppDir(tree() / "Applications/Silent.app");
  const Executable silent(silentIPA, silentIPA->appDir(), "Silent", true);
  const auto request = [&](TessaloopClient& client, int i) {
    if (i % 2 == 0) {
      EXPECT_EQ(dump(client, program_).size(), 2U);
      return;
    }
    auto cancelled = std::async(std::launch::async, [&] {
      EXPECT_THROW(dump(client, silent), RemoteClassParser::Error);
      return true;
    });
    while (cancelled.wait_for(std::chrono::microseconds(100)) != std::future_status::ready) {
      client.cancel();
    }
  };
  // Before the first one; what the run times keep of that is a thread or descriptor or two.
  const long threads = entries("/proc/self/task") + kKept;
  const long descriptors = entries("/proc/self/fd") + kKept;
  {
    TessaloopClient client(quick(port));
    for (int i = 0; i < kRequests; ++i) request(client, i);
  }
  // Whoever waits for an agent's process goes when that has gone.
  EXPECT_TRUE(becomesTrue([&] { return entries("/proc/self/task") <= threads; }));
  EXPECT_TRUE(becomesTrue([&] { return entries("/proc/self/fd") <= descriptors; }));
  EXPECT_EQ(archiveFolders(), 0);
}

TEST_F(RemoteClassParserTest, PausesAndListensAtTheAgentPort) {
  try {
    const DatagramReceiver own(TessaloopDatagram::kPort);
  } catch (const std::system_error& error) {
    GTEST_SKIP() << error.what();
  }
  using Clock = std::chrono::steady_clock;
  const StandIns standIns(script(5432));
  const auto parent = Progress::discrete(1);
  const Clock::time_point start = Clock::now();
  const Classes classes = RemoteClassParser().parse(image_, parent);
  EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(500));
  ASSERT_EQ(classes.size(), 1U);
  EXPECT_EQ(parent->fractionCompleted(), 1);
  EXPECT_EQ(archiveFolders(), 0);

  writeInfo(kSilentApp);
  auto cancelled = std::async(std::launch::async, [&] {
    EXPECT_THROW(RemoteClassParser().parse(image_), RemoteClassParser::Error);
    return true;
  });
  while (cancelled.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    cancelTessaloopIfNeeded();
  }
}

}  // namespace
}  // namespace tavlen
