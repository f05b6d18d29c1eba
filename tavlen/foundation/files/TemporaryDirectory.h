#pragma once

#include <filesystem>
#include <string_view>

namespace tavlen {

/// A fresh folder, private to its user, that is gone with the object, contents and all.
///
/// It lies in ".TemporaryItems" of the folder that is given, so that what is made in it can be
/// renamed into a place on the same volume. What a crash left there is removed by later objects of
/// the same folder, after a day. Threads: any, one object one thread at a time.
class TemporaryDirectory {
 public:
  /// The name of the folder around.
  static constexpr const char* kItemsFolder = ".TemporaryItems";

  /// Makes `folder` and ".TemporaryItems" where they are missing. Throws std::system_error.
  explicit TemporaryDirectory(const std::filesystem::path& folder);
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  const std::filesystem::path& path() const { return path_; }
  /// Leaves the folder to the caller, who removes it, within a day.
  std::filesystem::path release();

 private:
  std::filesystem::path path_;
};

/// Makes a fresh folder in `parent`, private to its user, whose name begins with `prefix` and goes
/// on at random. Throws std::system_error.
std::filesystem::path makeUniqueFolder(const std::filesystem::path& parent,
                                       std::string_view prefix);

}  // namespace tavlen
