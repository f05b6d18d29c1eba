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

void moveEntryAside(const fs::path& entry, const fs::path& copy) {
  try {
    moveItem(entry, copy);
  } catch (const std::system_error& error) {
    if (!isMissingPermission(error.code())) throw;
    try {
      copyItem(entry, copy);
    } catch (const std::system_error&) {
      return;  // Then it cannot come back.
    }
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

void PreviousInstallation::moveAside() {
  if (hadRecord_) moveEntryAside(folder_ / kTweakInfoFilename, aside_ / kTweakInfoFilename);
  for (const fs::path& name : names_) moveEntryAside(folder_ / name, aside_ / name);
}

void PreviousInstallation::removeNew() const {
  std::error_code error;
  bool isStuck = false;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder_, error)) {
    if (std::find(names_.begin(), names_.end(), entry.path().filename()) != names_.end()) continue;
    removeQuietly(entry.path());
    isStuck = isStuck || isTaken(entry.path());
  }
  if (isStuck) FileOperations::cleanUp(folder_, existed_);
}

bool PreviousInstallation::restore(const fs::path& name) const {
  if (isTaken(folder_ / name)) return true;
  if (!isTaken(aside_ / name)) return false;
  moveOrCopyByHelper(aside_ / name, folder_ / name);
  return true;
}

void PreviousInstallation::putBack() const noexcept {
  try {
    removeNew();
    std::error_code error;
    if (!existed_) {
      fs::remove(folder_, error);
      return;
    }
    if (!isFolder(folder_) && !fs::create_directory(folder_, error)) {
      FileOperations::cleanUp(folder_, true);
    }
    bool isWhole = true;
    for (const fs::path& name : names_) isWhole = restore(name) && isWhole;
    if (isWhole && hadRecord_) restore(kTweakInfoFilename);
  } catch (const std::exception&) {
    return;  // No record stands for what did not come back.
  }
}

}  // namespace tavlen
