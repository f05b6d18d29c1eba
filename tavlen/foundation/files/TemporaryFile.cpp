#include "tavlen/foundation/files/TemporaryFile.h"

#include <cerrno>
#include <chrono>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FolderReader.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/files/TreeRemoval.h"

namespace tavlen {

namespace {

/// Longer than any write takes, so that a file in use is never taken for a left-over.
constexpr std::chrono::minutes kLeftOverAge(10);

/// Whether this process has not swept `folder` in the last ten minutes. If so, records that it
/// sweeps it now.
bool isSweepDue(int folder) {
  using Clock = std::chrono::steady_clock;
  static std::mutex lock;
  static std::map<std::pair<dev_t, ino_t>, Clock::time_point> sweeps;
  struct stat status {};
  if (::fstat(folder, &status) != 0) return false;
  const Clock::time_point now = Clock::now();
  const std::lock_guard guard(lock);
  const auto [sweep, isFirst] = sweeps.try_emplace({status.st_dev, status.st_ino}, now);
  if (!isFirst && now - sweep->second <= kLeftOverAge) return false;
  sweep->second = now;
  return true;
}

bool isLeftOver(int folder, const std::string& name) {
  if (!name.starts_with(kTemporaryPrefix)) return false;
  struct stat status {};
  if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return false;
  const auto written = std::chrono::system_clock::from_time_t(status.st_mtime);
  return std::chrono::system_clock::now() - written > kLeftOverAge;
}

void removeEntry(int folder, const std::string& name) {
  if (::unlinkat(folder, name.c_str(), 0) == 0) return;
  const FileDescriptor tree = openForRemoval(folder, name);
  if (!tree) return;
  removeContents(tree, name);
  (void)::unlinkat(folder, name.c_str(), AT_REMOVEDIR);
}

}  // namespace

std::string temporaryName() {
  std::random_device random;
  return std::string(kTemporaryPrefix) + std::to_string(random()) + "-" + std::to_string(random());
}

TemporaryFile::TemporaryFile(int parent, const std::filesystem::path& folder, mode_t mode,
                             std::filesystem::path shown)
    : parent_(parent), shown_(std::move(shown)) {
  do {
    path_ = folder / temporaryName();
    file_ = FileDescriptor::tryOpenAt(parent_, path_.c_str(), kOpenNewFile, mode);
  } while (!file_ && errno == EEXIST);
  if (!file_) throwSystemError(shown_);
}

TemporaryFile::~TemporaryFile() {
  if (!path_.empty()) (void)::unlinkat(parent_, path_.c_str(), 0);
}

void TemporaryFile::finish() {
  file_.sync(shown_);
  close();
}

void TemporaryFile::close() { file_.close(shown_); }

bool isTemporaryName(const std::string& name) {
  return name.starts_with(kTemporaryPrefix) || name == TemporaryDirectory::kItemsFolder;
}

void sweepTemporaryFiles(int folder) {
  if (!isSweepDue(folder)) return;
  FileDescriptor listed = FileDescriptor::tryOpenAt(folder, ".", O_RDONLY | O_DIRECTORY);
  if (!listed) return;
  try {
    FolderReader reader(std::move(listed), "temporary files");
    while (const std::optional<std::string> name = reader.next()) {
      if (isLeftOver(folder, *name)) removeEntry(folder, *name);
    }
  } catch (const std::system_error&) {
    // The next sweep finds them.
  }
}

}  // namespace tavlen
