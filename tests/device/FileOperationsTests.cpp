#include "tavlen/device/FileOperations.h"

#include <cerrno>

#include "tavlen/device/Process.h"
#include "tests/device/DeviceProgramsTest.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using FileOperationsTest = DeviceProgramsTest;

TEST_F(FileOperationsTest, PassesItsWordsToTheHelper) {
  const std::string place = "Applications/Marrowgleam.app/bin/kvfileops";
  EXPECT_FALSE(FileOperations::isAvailable());
  EXPECT_EQ(addProgram(place), FileOperations::helper());
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
  addProgram("Applications/Marrowgleam.app/bin/kvfileops", "exit 2");
  EXPECT_EQ(error(), Process::Error::terminated(2));
  std::filesystem::permissions(FileOperations::helper(), std::filesystem::perms::owner_read);
  EXPECT_FALSE(FileOperations::isAvailable());
}

}  // namespace
}  // namespace tavlen
