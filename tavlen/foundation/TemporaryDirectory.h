#pragma once

#include <filesystem>

namespace tavlen {

/// A fresh folder, private to its user, that is gone with the object, contents and all.
///
/// It lies in ".TemporaryItems" of the folder that is given, so that what is made in it can be
/// renamed into a place on the same volume. Threads: any, one object one thread at a time.
class TemporaryDirectory {
 public:
  /// Makes `folder` and ".TemporaryItems" where they are missing. Throws std::system_error.
  explicit TemporaryDirectory(const std::filesystem::path& folder);
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace tavlen
