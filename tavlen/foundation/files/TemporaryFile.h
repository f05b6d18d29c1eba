#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// A new file under a temporary name, which goes with the object unless it has got another name.
///
/// Temporary names are random and begin with ".". What a crash leaves of such files goes with
/// sweepTemporaryFiles(). Errors are std::system_error. Threads: any, one object one thread at a
/// time.
class TemporaryFile {
 public:
  /// Makes it for writing in the folder `folder`: a path as seen from the open folder `parent`,
  /// which outlives the object, or from the working folder for AT_FDCWD; empty for those
  /// themselves. It has the permissions `mode` by the process's mask. `shown` is the path that
  /// errors name: what the file is to become.
  TemporaryFile(int parent, const std::filesystem::path& folder, mode_t mode,
                std::filesystem::path shown);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  /// As seen from `parent`.
  const std::filesystem::path& path() const { return path_; }
  const FileDescriptor& descriptor() const { return file_; }

  /// Brings the contents to the disk and closes the file.
  void finish();
  /// To be called once the file has another name.
  void leave() { path_.clear(); }

 private:
  int parent_;
  std::filesystem::path shown_;
  std::filesystem::path path_;  ///< empty once it is gone
  FileDescriptor file_;
};

/// A random name that isTemporaryName() knows: for what is made or taken apart in a folder whose
/// lists leave such names out.
std::string temporaryName();

/// Whether `name` is that of a temporary file, or of the folder that TemporaryDirectory makes,
/// which a crash may have left: not a part of what the user stored.
bool isTemporaryName(const std::filesystem::path& name);

/// Removes what crashes left in the open folder `folder` under temporary names, folders with all in
/// them, once it is ten minutes old. Listing a large folder takes longer than writing a file, so a
/// process lists each folder at most once in that time. Errors are ignored.
void sweepTemporaryFiles(int folder);

}  // namespace tavlen
