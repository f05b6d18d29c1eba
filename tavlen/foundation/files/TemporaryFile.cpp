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

namespace tavlen {

namespace {

constexpr std::string_view kPrefix = ".tavlen-";
/// Longer than any write takes, so that a file in use is never taken for a left-over.
constexpr std::chrono::minutes kLeftOverAge(10);

std::string makeName() {
  std::random_device random;
  return std::string(kPrefix) + std::to_string(random()) + "-" + std::to_string(random());
}

/// Whether this process has not swept `folder` in the last ten minutes. If so, records that it
/// sweeps it now.
bool isSweepDue(const std::filesystem::path& folder) {
  using Clock = std::chrono::steady_clock;
  static std::mutex lock;
  static std::map<std::string, Clock::time_point> sweeps;
  const Clock::time_point now = Clock::now();
  const std::lock_guard guard(lock);
  const auto [sweep, isFirst] = sweeps.try_emplace(folder, now);
  if (!isFirst && now - sweep->second <= kLeftOverAge) return false;
  sweep->second = now;
  return true;
}

}  // namespace

TemporaryFile::TemporaryFile(int parent, const std::filesystem::path& folder, mode_t mode,
                             std::filesystem::path shown)
    : parent_(parent), shown_(std::move(shown)) {
  do {
    path_ = folder / makeName();
    file_ = FileDescriptor::tryOpenAt(parent_, path_.c_str(), kOpenNewFile, mode);
  } while (!file_ && errno == EEXIST);
  if (!file_) throwSystemError(shown_);
}

TemporaryFile::~TemporaryFile() {
  if (!path_.empty()) (void)::unlinkat(parent_, path_.c_str(), 0);
}

void TemporaryFile::finish() {
  file_.sync(shown_);
  file_.close(shown_);
}

bool isTemporaryName(const std::filesystem::path& name) {
  return name.native().starts_with(kPrefix) || name == TemporaryDirectory::kItemsFolder;
}

void sweepTemporaryFiles(const std::filesystem::path& folder) {
  if (!isSweepDue(folder)) return;
  const auto now = std::filesystem::file_time_type::clock::now();
  try {
    FolderReader reader(FileDescriptor::open(folder, O_RDONLY | O_DIRECTORY), folder);
    while (const std::optional<std::string> name = reader.next()) {
      if (!name->starts_with(kPrefix)) continue;
      std::error_code error;
      const auto written = std::filesystem::last_write_time(folder / *name, error);
      if (!error && now - written > kLeftOverAge) std::filesystem::remove(folder / *name, error);
    }
  } catch (const std::system_error&) {
    // The next sweep finds them.
  }
}

}  // namespace tavlen
