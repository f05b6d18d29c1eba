

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <limits>

#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/FileOperations.h"
#include "tavlen/device/Process.h"
#include "tavlen/device/ProcessControl.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

/// A device root of the test's own, whose programs write down what they are called with.
class DeviceProgramsTest : public testing::Test {
 protected:
  DeviceProgramsTest() {
    DeviceRoot::setShared(DeviceRoot(root_.path()));
    DevicePrograms::setForOtherRoots({root() / "helper", root() / "kill", root() / "killall"});
  }
  ~DeviceProgramsTest() override { DeviceRoot::setShared(DeviceRoot()); }

  std::filesystem::path addProgram(const std::string& path, const std::string& end = "") const {
    const std::filesystem::path program = root_.write(
        path, "#!/bin/sh\nprintf '[%s]' \"$@\" >>'" + notes().string() + "'\n" + end + "\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    return program;
  }
  /// What was called since the last time.
  std::string calls() const {
    std::string text = std::filesystem::exists(notes()) ? readFile(notes()) : "";
    std::filesystem::remove(notes());
    return text;
  }
  const std::filesystem::path& root() const { return root_.path(); }

 private:
  std::filesystem::path notes() const { return root_.path() / "calls"; }

  TemporaryFolder root_;
};

using ProcessControlTest = DeviceProgramsTest;
using FileOperationsTest = DeviceProgramsTest;

TEST_F(ProcessControlTest, RunsTheDevicesPrograms) {
  addProgram("kill");
  addProgram("killall");
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

  // A tree's own programs are data.
  for (const char* path :
       {"bin/kill", "usr/bin/killall", "Applications/Marrowgleam.app/bin/kvfileops"}) {
    addProgram(path);
  }
  DevicePrograms::setForOtherRoots({});
  killProcessWithPID(12345);
  respring();
  EXPECT_FALSE(FileOperations::isAvailable());
  EXPECT_EQ(calls(), "");
  DeviceRoot::setShared(DeviceRoot("/", "/var/jb"));
  EXPECT_EQ(DevicePrograms::shared().killall, "/var/jb/usr/bin/killall");
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

TEST_F(FileOperationsTest, PassesItsWordsToTheHelper) {
  EXPECT_FALSE(FileOperations::isAvailable());
  EXPECT_EQ(addProgram("helper"), FileOperations::helper());
  EXPECT_TRUE(FileOperations::isAvailable());
  FileOperations::cleanUp("/a b", true);
  EXPECT_EQ(calls(), "[cleanup][/a b][1]");
  FileOperations::cleanUp("/a", false);
  EXPECT_EQ(calls(), "[cleanup][/a][0]");
  FileOperations::copy("/from/x", "/to/x");
  EXPECT_EQ(calls(), "[copy][/from/x][/to/x]");
  FileOperations::fetchLogs("a.b", "/to");
  EXPECT_EQ(calls(), "[fetch-logs][a.b][/to]");
}

TEST_F(FileOperationsTest, PassesTheHelpersFailureOn) {
  const auto error = [] {
    return thrown<Process::Error>([] { FileOperations::fetchLogs("a.b", "/to"); });
  };
  EXPECT_EQ(error(), Process::Error::posixSpawn(ENOENT));
  addProgram("helper", "exit 2");
  EXPECT_EQ(error(), Process::Error::terminated(2));
  std::filesystem::permissions(FileOperations::helper(), std::filesystem::perms::owner_read);
  EXPECT_FALSE(FileOperations::isAvailable());
}

}  // namespace
}  // namespace tavlen
