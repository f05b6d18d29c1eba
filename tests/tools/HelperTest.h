#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tools/FileSizeLimit.h"

namespace tavlen {

/// Runs the file-operations helper on a device tree of the test's own.
class HelperTest : public testing::Test {
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
  /// Runs `job` in a process that nobody called and that has the rights of this one besides, as a
  /// program whose file lends them. Whether it threw nothing. To be called by root only.
  static bool runWithLentRights(FunctionRef<void()> job);
  static constexpr uid_t kNobody = 65534;
  void setRoot(const std::string& root) { rootVariable_ = root; }

  const std::filesystem::path& root() const { return root_.path(); }
  /// A folder beside the root, which nobody may touch.
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

 private:
  TemporaryFolder root_;
  TemporaryFolder outside_;
  TemporaryFolder messages_;
  std::string rootVariable_;
};

/// A process that swaps two entries as fast as it can, until it is destroyed.
class Swapper {
 public:
  Swapper(const std::filesystem::path& a, const std::filesystem::path& b) : child_(::fork()) {
    while (child_ == 0) ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE);
  }
  ~Swapper() {
    ::kill(child_, SIGKILL);
    ::waitpid(child_, nullptr, 0);
  }
  Swapper(const Swapper&) = delete;
  Swapper& operator=(const Swapper&) = delete;

 private:
  pid_t child_;
};

}  // namespace tavlen
