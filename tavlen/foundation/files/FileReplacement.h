#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/TemporaryFile.h"

namespace tavlen {

/// Replaces the contents of a file atomically.
///
/// The constructor writes the bytes to a temporary file in the same folder and flushes it to the
/// disk; commit() renames it into place. Readers, and a restart after a crash, see the old contents
/// or the new ones. Prepare several replacements before committing them: little can fail between
/// the first commit and the last. A symbolic link is followed; an existing file keeps its
/// permissions. Temporary names begin with "."; later replacements in the same folder remove those
/// that a crash left (sweepTemporaryFiles()).
/// Threads: any, one object one thread at a time.
class TAVLEN_API FileReplacement {
 public:
  /// Prepares the replacement. Throws std::system_error with the path, also when `file` is a folder
  /// (EISDIR) or anything else that is not a regular file (EINVAL).
  FileReplacement(const std::filesystem::path& file, std::string_view contents);

  /// Replaces the file `name`, not a link, of the folder that is open as `folder`; errors name it
  /// `shown`. Throws like the above.
  FileReplacement(FileDescriptor folder, std::string name, std::filesystem::path shown,
                  std::string_view contents);

  /// Renames the new contents into place. Call once; without the call they are discarded. Throws
  /// std::system_error with the path; the file is then unchanged.
  void commit();

 private:
  FileReplacement(const std::filesystem::path& file, const std::filesystem::path& target,
                  std::string_view contents);

  std::filesystem::path file_;  ///< for error texts
  FileDescriptor folder_;
  std::string name_;
  TemporaryFile temporary_;
};

/// Prepares the replacement of one file and commits it. Errors as for FileReplacement.
TAVLEN_API void replaceFile(const std::filesystem::path& file, std::string_view contents);

}  // namespace tavlen
