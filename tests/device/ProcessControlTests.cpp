#include "tavlen/device/ProcessControl.h"

#include <limits>

#include "tavlen/device/Process.h"
#include "tests/device/DeviceProgramsTest.h"

namespace tavlen {
namespace {

using ProcessControlTest = DeviceProgramsTest;

TEST_F(ProcessControlTest, RunsTheDevicesPrograms) {
  EXPECT_EQ(addProgram("bin/kill"), killProgram());
  EXPECT_EQ(addProgram("usr/bin/killall"), killallProgram());
  killProcessWithPID(12345);
  EXPECT_EQ(calls(), "[-9][12345]");
  killProcessWithPID(std::numeric_limits<pid_t>::max());
  EXPECT_EQ(calls(), "[-9][2147483647]");
  for (const pid_t pid : {0, -1, -12345, std::numeric_limits<pid_t>::min()}) {
    killProcessWithPID(pid);
    EXPECT_EQ(calls(), "") << pid;
  }
  respring();
  EXPECT_EQ(calls(), "[-9][SpringBoard]");
}

TEST_F(ProcessControlTest, AnswersTheChildOrMinusOne) {
  const std::string failing = addProgram("failing", "exit 1").string();
  EXPECT_GT(killProcess(failing.c_str(), "x"), 1);  // its status is nobody's concern
  EXPECT_EQ(calls(), "[-9][x]");
  // Nobody else's child is waited for in the place of one that was not started.
  Process other("true", {"true"});
  other.launch();
  EXPECT_EQ(killProcess((root() / "missing").c_str(), "x"), -1);
  EXPECT_NO_THROW(other.waitUntilExit());
  EXPECT_EQ(killProcess("true", "x"), -1);  // not searched for
  respring();                               // missing: no trace
  killProcessWithPID(12345);
}

}  // namespace
}  // namespace tavlen
