#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/TemporaryFile.h"

namespace tavlen {

/// New contents for a file, which take its place whole or not at all.
///
/// The bytes lie in a temporary file next to it, already on the disk, until commit() gives them the
/// name in one step: a reader and a crash find the old file or the new one. Preparing several and
/// then committing them leaves little that can fail between the first and the last. A symbolic link
/// is followed; an existing file's permissions stay. Temporary names begin with "."; what a crash
/// left of them is removed by later replacements in the same folder (sweepTemporaryFiles()).
/// Threads: any, one object one thread at a time.
class FileReplacement {
 public:
  /// Throws std::system_error with the path, for a folder (EISDIR) or anything else that is no
  /// regular file (EINVAL) in the file's place, too.
  FileReplacement(const std::filesystem::path& file, std::string_view contents);

  /// The file `name`, itself no link, of the folder opened as `folder`; errors call it `shown`.
  FileReplacement(FileDescriptor folder, std::string name, std::filesystem::path shown,
                  std::string_view contents);

  /// To be called once; what is not committed is dropped. Throws std::system_error with the path;
  /// the file is then as it was.
  void commit();

 private:
  FileReplacement(const std::filesystem::path& file, const std::filesystem::path& target,
                  std::string_view contents);

  std::filesystem::path file_;  ///< as errors name it
  FileDescriptor folder_;
  std::string name_;
  TemporaryFile temporary_;
};

/// Prepares the replacement of one file and commits it. Errors as FileReplacement's.
void replaceFile(const std::filesystem::path& file, std::string_view contents);

}  // namespace tavlen
