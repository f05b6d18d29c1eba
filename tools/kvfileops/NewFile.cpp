#include "kvfileops/NewFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <utility>

#include "kvfileops/Failure.h"

namespace tavlen::fileops {

namespace {

/// The library's own prefix, so that its next writer in the folder sweeps what a crash left.
std::string temporaryName() {
  std::random_device random;
  return ".tavlen-" + std::to_string(random()) + "-" + std::to_string(random());
}

/// As rename(), but EEXIST where `to` stands.
int renameToNew(int folder, const char* from, const char* to) {
#if defined(RENAME_NOREPLACE)
  if (::renameat2(folder, from, folder, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return -1;
#endif
  // Where the system or the file system has no such call.
  if (::linkat(folder, from, folder, to, 0) != 0) return -1;
  return ::unlinkat(folder, from, 0);
}

}  // namespace

NewFile::NewFile(int folder, std::string name, mode_t mode, std::filesystem::path shown)
    : folder_(folder),
      name_(std::move(name)),
      shown_(std::move(shown)),
      temporaryName_(temporaryName()),
      file_(::openat(folder, temporaryName_.c_str(),
                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode)) {
  if (file_.get() < 0) fail(errno, shown_);
}

NewFile::~NewFile() {
  if (!temporaryName_.empty()) (void)::unlinkat(folder_, temporaryName_.c_str(), 0);
}

bool NewFile::commit() {
  if (::fsync(file_.get()) != 0) fail(errno, shown_);
  closeWritten(std::move(file_), shown_);
  if (renameToNew(folder_, temporaryName_.c_str(), name_.c_str()) != 0) {
    if (errno == EEXIST) return false;
    fail(errno, shown_);
  }
  temporaryName_.clear();
  return true;
}

void closeWritten(Descriptor file, const std::filesystem::path& shown) {
  if (::close(file.release()) != 0 && errno != EINTR) fail(errno, shown);
}

}  // namespace tavlen::fileops
