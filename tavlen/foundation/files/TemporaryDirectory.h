#pragma once

#include <filesystem>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A new folder, private to its user, that is removed with its contents when the object is
/// destroyed.
///
/// It is created in ".TemporaryItems" of the given folder, so that items made in it can be renamed
/// to places on the same volume. Folders left by a crash are removed after a day by later objects
/// for the same folder. Threads: any, one object one thread at a time.
class TAVLEN_API TemporaryDirectory {
 public:
  /// The name of the common folder.
  static constexpr const char* kItemsFolder = ".TemporaryItems";

  /// Creates `folder` and ".TemporaryItems" if they are missing. Throws std::system_error.
  explicit TemporaryDirectory(const std::filesystem::path& folder);
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  /// The new folder; empty after release().
  const std::filesystem::path& path() const { return path_; }
  /// Hands the folder over to the caller, who has to remove it within a day.
  std::filesystem::path release();

 private:
  std::filesystem::path path_;
};

/// Creates a new folder in `parent`, private to its user, named `prefix` and random characters.
/// Throws std::system_error.
TAVLEN_API std::filesystem::path makeUniqueFolder(const std::filesystem::path& parent,
                                                  std::string_view prefix);

/// The same in the folder of temporary files (TMPDIR).
TAVLEN_API std::filesystem::path makeUniqueTemporaryFolder(std::string_view prefix);

}  // namespace tavlen
