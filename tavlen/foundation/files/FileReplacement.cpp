#include "tavlen/foundation/files/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <random>
#include <system_error>

#include "tavlen/foundation/files/DiskSync.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"

namespace tavlen {

namespace {

constexpr std::string_view kTemporaryPrefix = ".tavlen-";
/// Longer than any replacement takes, so that nobody's is taken for a left-over.
constexpr std::chrono::minutes kLeftOverAge(10);

std::filesystem::path folderOf(const std::filesystem::path& file) {
  return file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
}

/// The file that `path` leads to, through links; one to nothing leads to where it points.
std::filesystem::path resolved(std::filesystem::path path) {
  constexpr int kMostLinks = 40;  // as the system counts them
  std::error_code error;
  for (int links = 0; std::filesystem::is_symlink(path, error); ++links) {
    if (links == kMostLinks) {
      throw std::system_error(ELOOP, std::generic_category(), path.string());
    }
    path = folderOf(path) / std::filesystem::read_symlink(path);
  }
  return path;
}

void sweepLeftOvers(const std::filesystem::path& folder) {
  std::error_code error;
  const auto now = std::filesystem::file_time_type::clock::now();
  std::filesystem::directory_iterator entry(folder, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    if (!entry->path().filename().native().starts_with(kTemporaryPrefix)) continue;
    std::error_code ignored;
    const auto written = std::filesystem::last_write_time(entry->path(), ignored);
    if (!ignored && now - written > kLeftOverAge) std::filesystem::remove(entry->path(), ignored);
  }
}

}  // namespace

FileReplacement::FileReplacement(const std::filesystem::path& file, std::string_view contents)
    : file_(file), target_(resolved(file)) {
  std::error_code ignored;
  const std::filesystem::file_status status = std::filesystem::status(target_, ignored);
  if (std::filesystem::is_directory(status)) fail(EISDIR);
  // A pipe or a device would be gone.
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) fail(EINVAL);
  sweepLeftOvers(folderOf(target_));
  try {
    create();
    copyPermissions();  // before the contents, which a private file must not show meanwhile
    write(contents);
    bringToDisk();
  } catch (...) {
    // No destructor runs for an object that was never finished.
    if (descriptor_ >= 0) ::close(descriptor_);
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
    throw;
  }
}

FileReplacement::~FileReplacement() {
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

void FileReplacement::create() {
  std::filesystem::path name;
  do {
    name = folderOf(target_) / makeTemporaryName();
    // The plain mode, so that a new file gets its permissions as any other, by the process's mask.
    descriptor_ = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  } while (descriptor_ < 0 && (errno == EEXIST || errno == EINTR));
  if (descriptor_ < 0) fail(errno);
  temporary_ = name;
}

void FileReplacement::copyPermissions() const {
  struct stat status {};
  if (::stat(target_.c_str(), &status) != 0) return;  // there is no file yet
  // First, as it clears bits of the mode. What another owns stays theirs where we may give it away.
  const bool isOurs = status.st_uid == ::geteuid() && status.st_gid == ::getegid();
  if (!isOurs && ::fchown(descriptor_, status.st_uid, status.st_gid) != 0 && errno != EPERM) {
    fail(errno);
  }
  if (::fchmod(descriptor_, status.st_mode & 07777) != 0) fail(errno);
}

void FileReplacement::write(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    // A write of nothing could be repeated for ever.
    if (count <= 0) fail(count < 0 ? errno : EIO);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void FileReplacement::bringToDisk() {
  while (::fsync(descriptor_) != 0) {
    if (errno != EINTR) fail(errno);
  }
  // Some file systems report a failed write only here.
  const int closed = ::close(descriptor_);
  descriptor_ = -1;
  if (closed != 0 && errno != EINTR) fail(errno);
}

void FileReplacement::commit() {
  if (::rename(temporary_.c_str(), target_.c_str()) != 0) fail(errno);
  temporary_.clear();
  syncFolder(folderOf(target_));
}

void FileReplacement::fail(int code) const {
  throw std::system_error(code, std::generic_category(), file_.string());
}

bool isTemporaryName(const std::filesystem::path& name) {
  return name.native().starts_with(kTemporaryPrefix) || name == TemporaryDirectory::kItemsFolder;
}

std::string makeTemporaryName() {
  std::random_device random;
  return std::string(kTemporaryPrefix) + std::to_string(random()) + "-" + std::to_string(random());
}

void replaceFile(const std::filesystem::path& file, std::string_view contents) {
  FileReplacement(file, contents).commit();
}

}  // namespace tavlen
