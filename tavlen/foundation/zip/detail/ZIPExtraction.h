#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// A new folder in which an archive's entries are created, each relative to its open parent folder.
/// Never follows links, never overwrites. Names are already unique; EEXIST therefore means that the
/// volume folds case or Unicode (caseConflict). Errors: std::system_error with the path. Threads:
/// one object one thread at a time.
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
  /// Opens the folder `path`, empty for the top, and creates its missing components.
  const FileDescriptor& openFolder(std::string_view path, const std::string& entry);
  FileDescriptor stepInto(int parent, std::string_view path, const std::string& component,
                          const std::string& entry);
  /// The path that errors show for the archive's name `name`.
  std::string shownPath(std::string_view name) const;

  std::filesystem::path folder_;
  bool isKept_ = false;
  FileDescriptor top_;
  FileDescriptor current_;   ///< the folder used last, usually also the next entry's
  std::string currentPath_;  ///< empty when current_ is the top
  std::set<std::string, std::less<>> made_;
};

}  // namespace tavlen
