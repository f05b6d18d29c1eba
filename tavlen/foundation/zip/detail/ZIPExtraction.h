#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// A new folder in which an archive's entries are created, each relative to its open parent folder.
/// Never follows links, never overwrites.
///
/// Names are unique and come in byte order: a folder comes before its contents, and those come
/// together. So each folder is entered once, and EEXIST means that the volume folds case or Unicode
/// (caseConflict).
///
/// Permissions are the archive's, reduced by the umask and without write permission for group and
/// others; the owner may always read and change the tree. Errors: std::system_error with the path.
/// Threads: one object one thread at a time.
class ZIPExtraction {
 public:
  /// Receives the contents of a file.
  using Sink = FunctionRef<void(std::string_view)>;

  /// Creates the folder, private to its user. The destructor removes it unless keep() was called.
  explicit ZIPExtraction(const std::filesystem::path& folder);
  ZIPExtraction(const ZIPExtraction&) = delete;
  ZIPExtraction& operator=(const ZIPExtraction&) = delete;
  ~ZIPExtraction();

  /// Creates a folder; `name` ends with "/". `mode` 0 selects the default permissions, here and
  /// below.
  void makeFolder(const std::string& name, std::uint32_t mode);
  /// Creates a file and its missing parent folders; `write` supplies the contents.
  void makeFile(const std::string& name, std::uint32_t mode, FunctionRef<void(Sink)> write);
  /// Keeps the folder when the object is destroyed.
  void keep() { isKept_ = true; }

 private:
  /// An open folder, by the length of its path in `path_`.
  struct Level {
    std::size_t length;
    FileDescriptor folder;
  };

  mode_t permissions(std::uint32_t mode, mode_t usual, mode_t least) const;
  mode_t probedMask() const;
  /// Opens the folder `path`, which may be empty for the top, and makes what is missing of it. The
  /// descriptor is valid until the next call.
  const FileDescriptor& openFolder(std::string_view path, const std::string& entry);
  void enter(std::string_view path, std::size_t begin, bool isNew, const std::string& entry);
  const FileDescriptor& deepest() const { return levels_.empty() ? top_ : levels_.back().folder; }
  /// How errors name what `name` is in the archive.
  std::string shownPath(std::string_view name) const;

  std::filesystem::path folder_;
  bool isKept_ = false;
  FileDescriptor top_;
  mode_t allowed_ = 0;
  std::string path_;           ///< of the folder that was used last; empty for the top
  std::vector<Level> levels_;  ///< the last of the folders that lead to `path_`
};

}  // namespace tavlen
