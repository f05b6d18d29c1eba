#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/tools/FileSizeLimit.h"

namespace tavlen {

/// Runs the file-operations helper on a device tree of the test's own.
class HelperTest : public testing::Test {
 public:
  static constexpr int kNotStarted = 127;  ///< the status where the helper could not be started

 protected:
  enum class User { same, nobody };
  struct Result {
    int status;  ///< the exit status, or minus the signal that ended it
    std::string err;
  };

  HelperTest();

  Result run(const std::vector<std::string>& words, User user = User::same) const;
  /// The exit status alone; what the helper said is shown where the test fails.
  int status(const std::vector<std::string>& words, User user = User::same) const;
  static constexpr uid_t kNobody = 65534;
  void setRoot(const std::string& root) { rootVariable_ = root; }

  const std::filesystem::path& root() const { return root_.path(); }
  /// A folder next to the root, which is to stay as it is.
  const std::filesystem::path& outside() const { return outside_.path(); }
  /// The folder of installed tweaks, or what lies in it.
  std::filesystem::path tweaks(const std::string& name = "") const;
  void write(const std::string& name, std::string_view bytes) const { root_.write(name, bytes); }
  void writeTweak(const std::string& name, std::string_view bytes = "x") const;
  void writeOutside(const std::string& name, std::string_view bytes = "x") const {
    outside_.write(name, bytes);
  }
  /// Makes `depth` nested folders in `folder`, each called "z"; returns the deepest.
  static std::filesystem::path nest(std::filesystem::path folder, int depth) {
    while (depth-- > 0) folder /= "z";
    std::filesystem::create_directories(folder);
    return folder;
  }

  /// Everything below `folder`: names, kinds, permissions, contents.
  static std::string contents(const std::filesystem::path& folder);
  std::string everything() const { return contents(root()) + "outside:\n" + contents(outside()); }

  std::string program_;
  /// What the helper's process does before it becomes the user and starts; false keeps it from it.
  std::function<bool()> prepare_;

 private:
  TemporaryFolder root_;
  TemporaryFolder outside_;
  TemporaryFolder messages_;
  std::string rootVariable_;
};

/// A process that does `step` over and over, until it is destroyed.
class Repetition {
 public:
  explicit Repetition(const std::function<void()>& step) : child_(::fork()) {
    while (child_ == 0) step();
  }
  ~Repetition() {
    ::kill(child_, SIGKILL);
    ::waitpid(child_, nullptr, 0);
  }
  Repetition(const Repetition&) = delete;
  Repetition& operator=(const Repetition&) = delete;

 private:
  pid_t child_;
};

/// Swaps two entries as fast as it can.
class Swapper : Repetition {
 public:
  Swapper(const std::filesystem::path& a, const std::filesystem::path& b)
      : Repetition(
            [&] { ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE); }) {}
};

}  // namespace tavlen
