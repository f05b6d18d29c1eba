#include "tavlen/bundles/detail/PreviousInstallation.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <utility>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/FileOperations.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"

namespace tavlen {

namespace fs = std::filesystem;

namespace {

bool isFolder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(fs::symlink_status(path, ignored));
}

/// Returns whether the entry has left its place; otherwise it is copied, if it can be read.
bool moveEntryAside(const fs::path& entry, const fs::path& copy) {
  try {
    moveItem(entry, copy);
    return true;
  } catch (const std::system_error& error) {
    if (!isMissingPermission(error.code())) throw;
    try {
      copyItem(entry, copy);
    } catch (const std::system_error& unread) {
      // Then it cannot come back. Any other error stops the installation while nothing is lost.
      if (!isMissingPermission(unread.code())) throw;
    }
    return false;
  }
}

}  // namespace

bool isMissingPermission(const std::error_code& error) {
  return error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
         error == std::errc::read_only_file_system;
}

void moveOrCopyByHelper(const fs::path& source, const fs::path& destination) {
  try {
    moveItem(source, destination);
  } catch (const std::system_error& error) {
    if (!isMissingPermission(error.code())) throw;
    FileOperations::copy(source, destination);
  }
}

PreviousInstallation::PreviousInstallation(fs::path folder, fs::path aside)
    : folder_(std::move(folder)), aside_(std::move(aside)), existed_(isFolder(folder_)) {
  if (!existed_) return;
  try {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
      names_.push_back(entry.path().filename());
    }
  } catch (const fs::filesystem_error& error) {
    if (!isMissingPermission(error.code())) throw;
  }
  hadRecord_ = std::erase(names_, fs::path(kTweakInfoFilename)) > 0;
}

void PreviousInstallation::takeAway(bool isFollowedByTweak) {
  if (hadRecord_) moveEntryAside(folder_ / kTweakInfoFilename, aside_ / kTweakInfoFilename);
  for (const fs::path& name : names_) {
    if (moveEntryAside(folder_ / name, aside_ / name)) moved_.push_back(name);
  }
  hasHelperStarted_ = true;
  FileOperations::cleanUp(folder_, isFollowedByTweak);
}

void PreviousInstallation::removeFromFolder(const std::vector<fs::path>& names) const {
  bool isStuck = false;
  for (const fs::path& name : names) {
    removeQuietly(folder_ / name);
    isStuck = isStuck || isTaken(folder_ / name);
  }
  if (isStuck && hasHelperStarted_) FileOperations::cleanUp(folder_, existed_);
}

void PreviousInstallation::makeFolder() const {
  std::error_code error;
  if (!isFolder(folder_) && !fs::create_directory(folder_, error)) {
    FileOperations::cleanUp(folder_, true);
  }
}

void PreviousInstallation::emptyByHelper() const {
  bool isEmpty = true;
  for (const fs::path& name : names_) {
    // Without a copy, what is left of the entry stays.
    if (!isTaken(aside_ / name)) return;
    isEmpty = isEmpty && !isTaken(folder_ / name);
  }
  if (!isEmpty) FileOperations::cleanUp(folder_, true);
}

bool PreviousInstallation::restore(const fs::path& name) const noexcept {
  try {
    // Until the helper starts, whatever is in the folder is whole, and a copy aside is not needed.
    if (isTaken(folder_ / name)) return !hasHelperStarted_;
    if (!isTaken(aside_ / name)) return false;
    moveOrCopyByHelper(aside_ / name, folder_ / name);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool PreviousInstallation::putBack(const std::vector<fs::path>& placed) const noexcept {
  try {
    if (isFolder(folder_)) removeFromFolder(placed);
    if (!existed_) {
      std::error_code ignored;
      // Only an empty folder, and no link that has stood in its place all the time.
      if (isFolder(folder_)) fs::remove(folder_, ignored);
      return true;
    }
    makeFolder();
    if (hasHelperStarted_) {
      removeFromFolder(moved_);
      makeFolder();
      emptyByHelper();
    }
  } catch (const std::exception&) {
    // What can be restored all the same is restored.
  }
  bool isWhole = true;
  for (const fs::path& name : names_) isWhole = restore(name) && isWhole;
  if (!hadRecord_) return isWhole;
  if (isWhole) return restore(kTweakInfoFilename);
  removeQuietly(folder_ / kTweakInfoFilename);
  return false;
}

}  // namespace tavlen
