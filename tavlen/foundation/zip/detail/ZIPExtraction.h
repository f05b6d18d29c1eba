#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// A fresh folder that an archive's entries are made in, each relative to the open folder around
/// it, through no link and in the place of nothing.
///
/// Names have been judged, alone and against each other, and come in the order of their bytes: a
/// folder comes before its contents, and those come together. So a folder is entered once, and one
/// that exists already exists for the volume only (ZIPError, caseConflict).
///
/// Permissions are those of the archive without what the process's mask takes away, and without
/// write permission for the group and others; the owner may always read and change the tree.
/// Errors: std::system_error with the path. Threads: one object one thread at a time.
class ZIPExtraction {
 public:
  /// Where an entry's file is written.
  using Sink = FunctionRef<void(std::string_view)>;

  /// Makes the folder, private to its user, and removes it at the end, unless it is kept.
  explicit ZIPExtraction(const std::filesystem::path& folder);
  ZIPExtraction(const ZIPExtraction&) = delete;
  ZIPExtraction& operator=(const ZIPExtraction&) = delete;
  ~ZIPExtraction();

  /// `name` has "/" at its end. `mode` 0 stands for the usual permissions, here and below.
  void makeFolder(const std::string& name, std::uint32_t mode);
  /// Makes the file and those folders around it that are missing; `write` fills it.
  void makeFile(const std::string& name, std::uint32_t mode, FunctionRef<void(Sink)> write);
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
