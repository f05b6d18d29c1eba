#pragma once

#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "tavlen/foundation/files/FileTree.h"

namespace tavlen {

namespace fs = std::filesystem;

/// In memory, where there is a file system for that which runs programs: a parent for the folders
/// of tests that would wait for the disk some thousand times.
inline fs::path memoryFolder() {
  const fs::path memory = "/dev/shm";
  struct statvfs status {};
  const bool isThere = ::statvfs(memory.c_str(), &status) == 0 &&
                       (status.f_flag & ST_NOEXEC) == 0 && ::access(memory.c_str(), W_OK) == 0;
  return isThere ? memory : fs::temp_directory_path();
}

/// A folder of a test's own, which is gone with the object.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const fs::path& parent = fs::temp_directory_path()) {
    std::string pattern = (parent / "tavlen-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::system_error(errno, std::generic_category(), pattern);
    }
    path_ = pattern;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    try {
      removeItem(path_);  // which gets into folders that a test has closed
    } catch (const std::system_error& error) {
      ADD_FAILURE() << error.what();
    }
  }

  const fs::path& path() const { return path_; }

  /// Writes the file `name` and the folders that lead to it.
  fs::path write(const std::string& name, std::string_view bytes) const {
    const fs::path file = path_ / name;
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
    return file;
  }

 private:
  fs::path path_;
};

}  // namespace tavlen
