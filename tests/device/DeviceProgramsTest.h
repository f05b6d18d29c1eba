#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace tavlen {

/// A device root of the test's own, whose programs write down what they are called with.
class DeviceProgramsTest : public testing::Test {
 protected:
  DeviceProgramsTest() { DeviceRoot::setShared(DeviceRoot(root_.path())); }
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

}  // namespace tavlen
