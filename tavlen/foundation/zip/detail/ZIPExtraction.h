#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// A fresh folder that an archive's entries are made in, each relative to the open folder around
/// it, through no link and in the place of nothing. Names have been judged, alone and against each
/// other, so that one that is there already is there for the volume only (ZIPError, caseConflict).
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
  /// Opens the folder `path`, which may be empty for the top, and makes what is missing of it.
  const FileDescriptor& openFolder(std::string_view path, const std::string& entry);
  FileDescriptor stepInto(int parent, std::string_view path, const std::string& component,
                          const std::string& entry);
  /// How errors name what `name` is in the archive.
  std::string shownPath(std::string_view name) const;

  std::filesystem::path folder_;
  bool isKept_ = false;
  FileDescriptor top_;
  FileDescriptor current_;   ///< the folder that was used last: the next entry's, mostly
  std::string currentPath_;  ///< empty when that was the top
  std::set<std::string, std::less<>> made_;
};

}  // namespace tavlen
