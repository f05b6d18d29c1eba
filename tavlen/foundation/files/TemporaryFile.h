#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// A new file under a temporary name, removed with the object unless it was renamed.
///
/// Temporary names are random and begin with ".". Files left by a crash are removed by
/// sweepTemporaryFiles(). Errors are std::system_error. Threads: any, one object one thread at a
/// time.
class TAVLEN_API TemporaryFile {
 public:
  /// Creates the file for writing in `folder`, a path relative to the open folder `parent`, which
  /// must outlive the object (AT_FDCWD for the working folder); an empty path is `parent` itself.
  /// Its permissions are `mode` without the bits of the process's umask. `shown` is the path in
  /// errors: the file's future name.
  TemporaryFile(int parent, const std::filesystem::path& folder, mode_t mode,
                std::filesystem::path shown);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  /// Relative to `parent`; empty after leave().
  const std::filesystem::path& path() const { return path_; }
  /// The open file, until finish() or close().
  const FileDescriptor& descriptor() const { return file_; }

  /// Flushes the contents to the disk and closes the file.
  void finish();
  /// Closes the file without waiting for the disk, for contents that can be made again.
  void close();
  /// Keeps the file. Call after renaming it.
  void leave() { path_.clear(); }

 private:
  int parent_;
  std::filesystem::path shown_;
  std::filesystem::path path_;  ///< empty once the file was renamed
  FileDescriptor file_;
};

/// How the names of temporary files, and those of temporaryName(), begin.
inline constexpr std::string_view kTemporaryPrefix = ".tavlen-";

/// A random name for which isTemporaryName() is true: for items that are created or deleted in a
/// folder whose listings omit such names.
TAVLEN_API std::string temporaryName();

/// Whether `name` is a temporary file's, or that of the folder in which TemporaryDirectory works. A
/// crash may have left such entries; they are not part of the user's data.
TAVLEN_API bool isTemporaryName(const std::string& name);

/// Removes entries with temporary names older than ten minutes, left by crashes, from the open
/// folder `folder`; folders with their contents. Listing a large folder takes longer than writing a
/// file, so a process lists each folder at most once in ten minutes. Errors are ignored.
TAVLEN_API void sweepTemporaryFiles(int folder);

}  // namespace tavlen
