#include "tavlen/foundation/files/TemporaryDirectory.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileTree.h"

namespace tavlen {

namespace {

/// Longer than any operation takes, so that a folder in use is never taken for a left-over.
constexpr std::chrono::hours kLeftOverAge(24);
/// Only folders with this prefix are swept: the common folder may contain folders of the system or
/// of other programs.
constexpr std::string_view kOwnPrefix = "tavlen-";

void sweepLeftOvers(const std::filesystem::path& items) {
  std::error_code error;
  if (!std::filesystem::is_directory(std::filesystem::symlink_status(items, error))) return;
  const auto now = std::filesystem::file_time_type::clock::now();
  std::filesystem::directory_iterator entry(items, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    if (!entry->path().filename().native().starts_with(kOwnPrefix)) continue;
    std::error_code unknown;
    if (!std::filesystem::is_directory(entry->symlink_status(unknown))) continue;
    const auto written = std::filesystem::last_write_time(entry->path(), unknown);
    if (!unknown && now - written > kLeftOverAge) removeQuietly(entry->path());
  }
}

}  // namespace

TemporaryDirectory::TemporaryDirectory(const std::filesystem::path& folder) {
  const std::filesystem::path items = folder / kItemsFolder;
  sweepLeftOvers(items);
  // Another object's destructor may remove the common folder between the two calls. Two threads
  // that retry without a pause can keep colliding, so each pause is longer than the last.
  constexpr int kAttempts = 1000;
  constexpr std::chrono::microseconds kStep(50);
  constexpr std::chrono::microseconds kLongestPause(5000);
  for (int attempt = 1; path_.empty(); ++attempt) {
    if (attempt > 1) std::this_thread::sleep_for(std::min(attempt * kStep, kLongestPause));
    std::error_code error;
    std::filesystem::create_directories(items, error);
    // A link would lead this object, and later sweeps, into a foreign folder.
    std::error_code unknown;
    if (std::filesystem::is_symlink(items, unknown)) throwSystemError(ELOOP, items);
    if (error == std::errc::file_exists && attempt < kAttempts &&
        std::filesystem::is_directory(folder, unknown)) {
      continue;
    }
    if (error) throw std::system_error(error, items.string());
    try {
      path_ = makeUniqueFolder(items, kOwnPrefix);
    } catch (const std::system_error& failure) {
      if (failure.code() != std::errc::no_such_file_or_directory || attempt == kAttempts) throw;
    }
  }
}

TemporaryDirectory::~TemporaryDirectory() {
  if (path_.empty()) return;
  removeQuietly(path_);
  // Fails while the folder is in use by others.
  std::error_code ignored;
  std::filesystem::remove(path_.parent_path(), ignored);
}

std::filesystem::path TemporaryDirectory::release() { return std::exchange(path_, {}); }

std::filesystem::path makeUniqueFolder(const std::filesystem::path& parent,
                                       std::string_view prefix) {
  std::string pattern = (parent / (std::string(prefix) + "XXXXXX")).string();
  if (::mkdtemp(pattern.data()) == nullptr) throwSystemError(pattern);
  return pattern;
}

std::filesystem::path makeUniqueTemporaryFolder(std::string_view prefix) {
  std::error_code error;
  const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
  if (error) throw std::system_error(error, "the folder of temporary files");
  return makeUniqueFolder(parent, prefix);
}

}  // namespace tavlen
