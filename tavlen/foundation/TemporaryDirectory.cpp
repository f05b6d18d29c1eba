#include "tavlen/foundation/TemporaryDirectory.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <string>
#include <system_error>
#include <utility>

#include "tavlen/foundation/FileTree.h"

namespace tavlen {

namespace {

/// Longer than any operation takes, so that nobody's folder is taken for a left-over.
constexpr std::chrono::hours kLeftOverAge(24);

void removeQuietly(const std::filesystem::path& item) noexcept {
  try {
    removeItem(item);
  } catch (const std::exception&) {
    // Temporary items are swept again later.
  }
}

void sweepLeftOvers(const std::filesystem::path& items) {
  std::error_code error;
  const auto now = std::filesystem::file_time_type::clock::now();
  std::filesystem::directory_iterator entry(items, error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    std::error_code unknown;
    const auto written = std::filesystem::last_write_time(entry->path(), unknown);
    if (!unknown && now - written > kLeftOverAge) removeQuietly(entry->path());
  }
}

}  // namespace

TemporaryDirectory::TemporaryDirectory(const std::filesystem::path& folder) {
  const std::filesystem::path items = folder / kItemsFolder;
  sweepLeftOvers(items);
  // Another's end may remove the common folder between the two calls.
  constexpr int kAttempts = 100;
  for (int attempt = 1; path_.empty(); ++attempt) {
    std::filesystem::create_directories(items);
    std::string pattern = (items / "XXXXXX").string();
    if (::mkdtemp(pattern.data()) != nullptr) {
      path_ = pattern;
    } else if (errno != ENOENT || attempt == kAttempts) {
      throw std::system_error(errno, std::generic_category(), pattern);
    }
  }
}

TemporaryDirectory::~TemporaryDirectory() {
  if (path_.empty()) return;
  removeQuietly(path_);
  // Only when nobody else works in it.
  std::error_code ignored;
  std::filesystem::remove(path_.parent_path(), ignored);
}

std::filesystem::path TemporaryDirectory::release() { return std::exchange(path_, {}); }

}  // namespace tavlen
