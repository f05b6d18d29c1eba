#include <gmock/gmock.h>
#include <signal.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "tavlen/device/SystemService.h"
#include "tavlen/foundation/files/FileSystem.h"
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
  write("bin/kill", "#!/bin/sh\necho >> '" + (tree() / "killing").string() + "'\nwhile ! [ -e '" +
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

}  // namespace
}  // namespace tavlen
