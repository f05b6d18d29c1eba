#include "kvfileops/NewFile.h"

#include <cerrno>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/ExclusiveRename.h"

namespace tavlen::fileops {

namespace {

/// Returns 0 or the error's number; EEXIST where there is an entry `to`.
int renameToNew(int folder, const char* from, const char* to) {
  const int code = renameExclusively(folder, from, to);
  if (code != ENOTSUP) return code;
  // A hard link replaces nothing either, even if an entry of that name appears at this moment.
  const bool isDone =
      ::linkat(folder, from, folder, to, 0) == 0 && ::unlinkat(folder, from, 0) == 0;
  return isDone ? 0 : errno;
}

}  // namespace

NewFile::NewFile(int folder, std::string name, mode_t mode, std::filesystem::path shown)
    : folder_(folder),
      name_(std::move(name)),
      shown_(std::move(shown)),
      file_(folder, {}, mode, shown_) {}

bool NewFile::commit() {
  file_.finish();
  const int code = renameToNew(folder_, file_.path().c_str(), name_.c_str());
  if (code == EEXIST) return false;
  if (code != 0) throwSystemError(code, shown_);
  file_.leave();
  return true;
}

}  // namespace tavlen::fileops
