#include "tavlen/device/Process.h"

#include <sys/time.h>
#include <sys/wait.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <limits>

#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/FileOperations.h"
#include "tavlen/device/ProcessControl.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using namespace std::string_literals;

std::string resultOf(Process& process) {
  return messageOf<Process::Error>([&] {
    process.launch();
    process.waitUntilExit();
  });
}

std::string resultOf(const std::string& path, const std::vector<std::string>& arguments) {
  Process process(path, arguments);
  return resultOf(process);
}

std::string resultOfShell(const std::string& script) {
  return resultOf("/bin/sh", {"own name", "-c", script});
}

TEST(Process, ReadsAStatusByTheDocumentedMasks) {
  const std::pair<int, std::string> rows[] = {{0, ""},
                                              {0x0300, "terminated(3)"},
                                              {0xFF00, "terminated(255)"},
                                              {0x80, ""},  // the core bit alone says nothing
                                              {9, "signalled(9)"},
                                              {0x8B, "signalled(11)"},  // with a core
                                              {0x0309, "signalled(9)"},
                                              {0x7E, "signalled(126)"},
                                              {0x7F, ""},  // stopped by nothing
                                              {0x137F, "terminated(19)"},
                                              {0xFFFF, "terminated(255)"},  // continued
                                              {0x10000, ""},
                                              {-1, "terminated(255)"}};
  for (const auto& [status, description] : rows) {
    const auto error = Process::Error::ofStatus(status);
    EXPECT_EQ(error ? error->description() : "", description) << status;
  }
}

TEST(Process, TellsHowAChildEnds) {
  EXPECT_EQ(resultOfShell("exit 0"), "");
  EXPECT_EQ(resultOfShell("exit 3"), "terminated(3)");
  EXPECT_EQ(resultOfShell("kill -9 $$"), "signalled(9)");
  EXPECT_EQ(resultOfShell("test \"$0\" = 'own name'"), "");
  EXPECT_EQ(resultOf("sh", {"sh", "-c", "exit 4"}), "terminated(4)");  // along PATH
  EXPECT_EQ(resultOf("true", {}), "");                                 // a vector of the null only

  const std::string missing = "posixSpawn(" + std::to_string(ENOENT) + ")";
  EXPECT_EQ(resultOf("/nowhere/program", {"program"}), missing);
  EXPECT_EQ(resultOf("no-program-of-that-name", {"x"}), missing);
  EXPECT_EQ(resultOf("", {"x"}), missing);
  EXPECT_EQ(resultOf("/", {"x"}), "posixSpawn(" + std::to_string(EACCES) + ")");
  const std::string invalid = "posixSpawn(" + std::to_string(EINVAL) + ")";
  EXPECT_EQ(resultOf("true", {"true", "a\0b"s}), invalid);
  EXPECT_EQ(resultOf("true\0x"s, {"true"}), invalid);
}

TEST(Process, KnowsItsChild) {
  Process fresh("true", {"true"});
  EXPECT_FALSE(fresh.pid());
  const auto error = thrown<Process::Error>([&] { fresh.waitUntilExit(); });
  ASSERT_EQ(error, Process::Error::notLaunched()) << "waited for nothing";
  EXPECT_STREQ(error->what(), "notLaunched");
  EXPECT_EQ(resultOf(fresh), "");
  EXPECT_GT(fresh.pid().value_or(0), 1);
  EXPECT_THROW(fresh.waitUntilExit(), Process::Error);  // its status was taken

  Process missing("/nowhere", {"nowhere"});
  EXPECT_THROW(missing.launch(), Process::Error);
  EXPECT_FALSE(missing.pid());
}

TEST(Process, WaitsOnWhenSignalsInterrupt) {
  static std::atomic<int> signals;
  signals = 0;
  struct sigaction former {};
  struct sigaction action {};
  action.sa_handler = [](int) { ++signals; };  // without SA_RESTART
  ASSERT_EQ(sigaction(SIGALRM, &action, &former), 0);
  const itimerval often = {{0, 5'000}, {0, 5'000}};
  const itimerval never = {};
  setitimer(ITIMER_REAL, &often, nullptr);
  EXPECT_EQ(resultOfShell("sleep 0.2; exit 5"), "terminated(5)");
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &former, nullptr);
  EXPECT_GT(signals, 1);
}

std::size_t openDescriptors() {
  using Iterator = fs::directory_iterator;
  return static_cast<std::size_t>(std::distance(Iterator("/proc/self/fd"), Iterator()));
}

TEST(Process, LeavesNothingBehind) {
  const std::size_t before = openDescriptors();
  for (int i = 0; i < 20; ++i) {
    EXPECT_NE(resultOf("/nowhere/program", {"program"}), "");
    EXPECT_EQ(resultOf("false", {"false"}), "terminated(1)");
    EXPECT_EQ(resultOf("/bin/true", {"true"}), "");
  }
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD) << "a child was not waited for";
}

TEST(Process, PassesOnlyTheStandardStreamsOn) {
  // The exit status is the number of the child's descriptors, its own among them.
  const std::string count = "set -- /proc/self/fd/*; exit $#";
  const std::string alone = resultOfShell(count);
  const FileDescriptor inheritable(::dup(STDERR_FILENO));
  EXPECT_EQ(resultOfShell(count), alone);
  EXPECT_EQ(resultOfShell("test -e /proc/self/fd/2"), "");
}

}  // namespace
}  // namespace tavlen
