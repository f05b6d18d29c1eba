#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

#include "tavlen/foundation/files/TemporaryFile.h"

namespace tavlen::fileops {

/// A file that gets its name when it is complete and on the disk; until then it has a temporary
/// one. What a crash leaves is swept by the library's next writer in the folder. No existing file
/// is overwritten. Errors: std::system_error.
class NewFile {
 public:
  /// Makes it in the open folder `folder`, which outlives it, with the permissions `mode`, less the
  /// process's mask. `shown` names the file in errors.
  NewFile(int folder, std::string name, mode_t mode, std::filesystem::path shown);

  /// For writing.
  const FileDescriptor& descriptor() const { return file_.descriptor(); }
  /// Gives the file its name; to be called once. A file that is not committed is removed. Returns
  /// false where an entry of that name exists, which stays as it is.
  bool commit();

 private:
  int folder_;
  std::string name_;
  std::filesystem::path shown_;
  TemporaryFile file_;
};

}  // namespace tavlen::fileops
