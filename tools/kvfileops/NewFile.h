#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

#include "kvfileops/Descriptor.h"

namespace tavlen::fileops {

/// A file that gets its name when it is whole and on the disk; until then it has one of its own,
/// which begins with ".". Nobody's file is overwritten. Errors: std::system_error.
class NewFile {
 public:
  /// In the opened folder `folder`, which outlives it, with the permissions `mode` by the process's
  /// mask. `shown` names the file in errors.
  NewFile(int folder, std::string name, mode_t mode, std::filesystem::path shown);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  /// Removes what was not committed.
  ~NewFile();

  /// For writing.
  int descriptor() const { return file_.get(); }
  /// To be called once. False where there is an entry of that name, which stays as it is.
  bool commit();

 private:
  int folder_;
  std::string name_;
  std::filesystem::path shown_;
  std::string temporaryName_;  ///< empty once it is gone
  Descriptor file_;
};

/// Closes a written file; some file systems report a failed write only then.
void closeWritten(Descriptor file, const std::filesystem::path& shown);

}  // namespace tavlen::fileops
