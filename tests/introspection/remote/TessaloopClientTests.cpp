#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <limits>

#include "tavlen/device/SystemService.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/introspection/classes/DynamicClassParser.h"
#include "tavlen/introspection/remote/RemoteClassParser.h"
#include "tavlen/introspection/remote/TessaloopInterface.h"
#include "tavlen/introspection/remote/detail/RemoteDump.h"
#include "tests/introspection/remote/DumpTest.h"

namespace tavlen {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

std::string number(double value) {
  std::string bytes(sizeof(value), '\0');
  std::memcpy(bytes.data(), &value, sizeof(value));
  return bytes;
}

std::string last(const std::string& path) { return number(-1) + path; }

class TessaloopClientTest : public DumpTest {
 protected:
  /// Sends the datagrams when the request listens.
  static void answer(TessaloopClient& client, const std::vector<std::string>& datagrams) {
    std::optional<std::uint16_t> port;
    ASSERT_TRUE(becomesTrue([&] { return (port = client.port()).has_value(); }));
    for (const std::string& datagram : datagrams) {
      ASSERT_TRUE(sendDatagram(port.value_or(0), datagram));
    }
  }
  /// The script of a launch that writes its options to launchOptions_.
  std::string notingScript() const {
    return script(0, "", "<key>launchOptions</key><string>" + launchOptions_ + "</string>");
  }
  bool isLaunched() const { return fs::exists(launchOptions_); }

  const std::string launchOptions_ = tree() / "options.plist";
};

TEST_F(TessaloopClientTest, ReadsDatagramsOfAnyLength) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    std::vector<std::string> datagrams;
    std::vector<double> fractions;
    Path path;
  } cases[] = {
      {{number(0.25), number(0.5), last("/a/b\0"s)}, {0.25, 0.5}, "/a/b"},
      {{last("/caf\xC3\xA9\0/rest\0"s)}, {}, "/caf\xC3\xA9"},
      // Any double but the one, whatever stands behind it.
      {{number(-0.5), number(1e300), number(-infinity), number(std::nextafter(-1.0, 0.0)) + "/x",
        last("/a")},
       {-0.5, 1e300, -infinity, std::nextafter(-1.0, 0.0)},
       "/a"},
      // Short ones: nothing of the one before shows.
      {{number(0.7) + "/before", "", "abc", number(2).substr(7), last("/a")},
       {0.7, 0, 0x636261 * std::numeric_limits<double>::denorm_min(),
        0x40 * std::numeric_limits<double>::denorm_min()},
       "/a"},
      {{number(0.7) + "/before", last("")}, {0.7}, {}},
      {{number(0.7) + "/a/path", last("/b")}, {0.7}, "/b"},
      {{last("\0/behind"s)}, {}, {}},
      {{last("/not UTF-8 \xC3\xA9\xC3"s)}, {}, {}},
      // Without a NUL, and longer than what is kept.
      {{last(std::string(1024, 'a'))}, {}, std::string(1024, 'a')},
      {{last(std::string(1023, 'a') + "bcdef")}, {}, std::string(1023, 'a') + "b"},
      {{number(3) + std::string(30'000, '\xFF'), last("/a")}, {3}, "/a"},
  };
  const StandIns standIns(script(0));
  TessaloopClient client(quick());
  for (const auto& row : cases) {
    SCOPED_TRACE(&row - std::begin(cases));
    RunningRequest request(client, kSilentApp);
    answer(client, row.datagrams);
    EXPECT_EQ(request.path(), row.path);
    EXPECT_EQ(request.fractions(), row.fractions);
    EXPECT_EQ(client.port(), std::nullopt);
  }
  RunningRequest request(client, kSilentApp);
  answer(client, {number(std::nan("")), last("/a")});
  EXPECT_EQ(request.path(), "/a");
  ASSERT_EQ(request.fractions().size(), 1U);
  EXPECT_TRUE(std::isnan(request.fractions().front()));
}

TEST_F(TessaloopClientTest, TellsTheAppWhichImage) {
  const StandIns standIns(notingScript());
  TessaloopClient client(quick());
  for (const bool isMain : {true, false}) {
    RunningRequest request(client, kSilentApp, "/Apps/Image", isMain);
    ASSERT_TRUE(becomesTrue([&] { return isLaunched(); }));
    EXPECT_THAT(readFile(launchOptions_),
                testing::HasSubstr(isMain ? "TESSALOOP_MAIN" : "/Apps/Image"));
    client.cancel();
    EXPECT_EQ(request.path(), std::nullopt);
    fs::remove(launchOptions_);
  }
}

TEST_F(TessaloopClientTest, EndsWithoutALaunch) {
  const std::string app = kApp;
  const std::string refused =
      "<key>launchErrors</key><dict><key>" + app + "</key><string>Refused</string></dict>";
  TessaloopClient client(quick());
  for (const std::string& script : {"<key>service</key><string>none</string>"s, refused}) {
    const StandIns standIns(script);
    RunningRequest request(client, app);
    EXPECT_EQ(request.path(), std::nullopt);
    EXPECT_THAT(log_.take(), testing::Contains(testing::StartsWith("error opening " + app + ": ")));
  }
}

TEST_F(TessaloopClientTest, LateAnswersConcernNoOtherRequest) {
  const std::string app = kApp;
  const StandIns standIns(
      "<key>launchDelay</key><real>2</real><key>launchErrors</key><dict><key>" + app +
      "</key><string>Late</string></dict><key>launchAnswers</key><dict><key>" + app +
      "</key><integer>2</integer><key>" + kSilentApp + "</key><integer>0</integer></dict>");
  TessaloopClient client(quick());
  {
    RunningRequest refused(client, app);
    answer(client, {last("/early")});
    EXPECT_EQ(refused.path(), "/early");
  }
  RunningRequest other(client, kSilentApp);  // whose launch is never answered
  ASSERT_TRUE(becomesTrue([&] { return log_.count("error opening") == 2; }));
  answer(client, {number(0.5)});
  ASSERT_TRUE(becomesTrue([&] { return other.fractions().size() == 1; }));
  EXPECT_FALSE(other.hasEnded());
  answer(client, {last("/path")});
  EXPECT_EQ(other.path(), "/path");
}

TEST_F(TessaloopClientTest, LaunchesWhenThePortIsTaken) {
  const StandIns standIns(notingScript());
  DatagramReceiver other(0);
  TessaloopClient client(quick(other.port()));
  for (int round = 0; round < 2; ++round) {
    RunningRequest request(client, kSilentApp);
    EXPECT_EQ(request.path(), std::nullopt);
    EXPECT_TRUE(fs::remove(launchOptions_));
  }
  EXPECT_EQ(log_.count("error listening to the dump agent"), 2);
  other.close();
  RunningRequest request(client, kSilentApp);
  answer(client, {last("/a")});
  EXPECT_EQ(request.path(), "/a");
}

TEST_F(TessaloopClientTest, IsCancelledBeforeTheSocketAndDuringTheKill) {
  const StandIns standIns(notingScript() + "<key>pids</key><dict><key>" + kApp +
                          "</key><integer>4711</integer></dict>");
  // One that does not end until it may.
  write("kill", "#!/bin/sh\necho >> '" + (tree() / "killing").string() + "'\nwhile ! [ -e '" +
                    (tree() / "go").string() + "' ]; do sleep 0.02; done\n");
  TessaloopClient client(quick());
  RunningRequest first(client, kApp);
  ASSERT_TRUE(becomesTrue([&] { return fs::exists(tree() / "killing"); }));
  RunningRequest second(client, kApp);  // ends the first, and waits for its turn
  ASSERT_TRUE(becomesTrue([&] { return !client.port(); }));
  client.cancel();
  EXPECT_FALSE(first.hasEnded());
  write("go", "");
  EXPECT_EQ(first.path(), std::nullopt);
  EXPECT_EQ(second.path(), std::nullopt);
  EXPECT_EQ(readFile(tree() / "killing"), "\n");  // the second one had not begun
  EXPECT_FALSE(isLaunched());
}

TEST_F(TessaloopClientTest, OfRequestsAtOnceOnlyTheNewestWaits) {
  constexpr int kRounds = 300;
  const StandIns standIns(notingScript());
  TessaloopClient client(quick());
  for (int round = 0; round < kRounds; ++round) {
    std::deque<RunningRequest> requests;
    for (int i = 0; i < 5; ++i) requests.emplace_back(client, kSilentApp);
    ASSERT_TRUE(becomesTrue([&] {
      return std::ranges::count_if(requests, &RunningRequest::hasEnded) >= 4;
    })) << round;
  }
}

TEST_F(TessaloopClientTest, IsCancelledDuringPauseAndLaunch) {
  const StandIns standIns(notingScript());
  TessaloopClient slow({0, std::chrono::microseconds::max()});
  slow.cancel();  // nothing yet
  {
    RunningRequest pausing(slow, kSilentApp);
    ASSERT_TRUE(becomesTrue([&] { return slow.port().has_value(); }));
    slow.cancel();
    EXPECT_EQ(pausing.path(), std::nullopt);
    EXPECT_FALSE(isLaunched());
  }
  TessaloopClient client(quick());
  RunningRequest waiting(client, kSilentApp);
  ASSERT_TRUE(becomesTrue([&] { return isLaunched(); }));
  const std::uint16_t port = client.port().value_or(0);
  client.cancel();
  EXPECT_NO_THROW(DatagramReceiver next(port));  // free at once
  EXPECT_EQ(waiting.path(), std::nullopt);
}

TEST_F(TessaloopClientTest, IsCancelledByItsProgressHandler) {
  const StandIns standIns(script(0));
  TessaloopClient client(quick());
  int calls = 0;
  std::future<void> other;
  auto path = std::async(std::launch::async, [&] {
    return client.invoke(kSilentApp, "/image", false, [&](double) {
      ++calls;
      // One that waits for this handler holds nothing that the handler's own call needs.
      other = std::async(std::launch::async, [&] { client.cancel(); });
      while (client.port()) std::this_thread::yield();
      client.cancel();
    });
  });
  answer(client, {number(0.1), number(0.2), last("/late")});
  EXPECT_EQ(valueOf(path, Path("the request did not end")), std::nullopt);
  EXPECT_EQ(calls, 1);
}

TEST_F(TessaloopClientTest, OnlyACancelOrARequestEndsTheWaitForAKilledAgent) {
  const std::uint16_t port = freePort();
  const StandIns standIns(script(port, "<key>TAVLEN_STALL</key><string>1</string>"));
  TessaloopClient client(quick(port));
  const auto agent = [] { return SystemService::pidForApplication(kApp); };
  // Waits until another agent than `former` is in the middle of its dump, and gives its pid.
  const auto begin = [&](const RunningRequest& request, pid_t former) {
    pid_t pid = -1;
    EXPECT_TRUE(becomesTrue([&] {
      pid = agent().value_or(former);
      return !request.fractions().empty() && pid != former;
    }));
    return pid;
  };
  // Not 0 or below, which are groups of processes.
  const auto signal = [](pid_t pid, int number) { return pid > 0 ? ::kill(pid, number) : 1; };
  RunningRequest first(client, kApp, kImage);
  const pid_t killed = begin(first, -1);
  EXPECT_EQ(signal(killed, SIGKILL), 0);
  ASSERT_TRUE(becomesTrue([&] { return !agent(); }));
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_FALSE(first.hasEnded());
  RunningRequest second(client, kApp, kImage);
  EXPECT_EQ(first.path(), std::nullopt);
  const pid_t left = begin(second, killed);
  RunningRequest third(client, kApp, kImage);  // which kills the app before it opens it
  EXPECT_EQ(second.path(), std::nullopt);
  const pid_t opened = begin(third, left);
  EXPECT_TRUE(becomesTrue([&] { return signal(left, 0) == -1; }));
  client.cancel();
  EXPECT_EQ(third.path(), std::nullopt);
  EXPECT_EQ(signal(opened, SIGKILL), 0);
  EXPECT_TRUE(becomesTrue([&] { return !agent(); }));
  EXPECT_EQ(archiveFolders(), 0);
}

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
  for (const auto& cls : dump(client, program_)) names.push_back(cls->name.str());
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
  constexpr int kRequests = 60;
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
