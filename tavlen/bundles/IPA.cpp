#include "tavlen/bundles/IPA.h"

#include <exception>
#include <system_error>

#include "tavlen/bundles/AppList.h"
#include "tavlen/bundles/detail/TweakInstallation.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/FileOperations.h"
#include "tavlen/device/InfoPlist.h"
#include "tavlen/device/InstalledRecords.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/tasks/NotificationPoster.h"

namespace tavlen {

std::shared_ptr<IPA> IPA::withAppDir(std::filesystem::path appDir) {
  // Not make_shared, which cannot call the private constructor.
  return std::shared_ptr<IPA>(new IPA(std::move(appDir)));
}

std::shared_ptr<IPA> IPA::openAt(const std::filesystem::path& appDir) {
  const DeviceRoot root = DeviceRoot::shared();
  if (!std::filesystem::is_directory(root.status(appDir)) ||
      !std::filesystem::exists(root.status(appDir / kInfoPlistFilename))) {
    throw Error::invalidIPA();
  }
  return withAppDir(root.follow(appDir));
}

std::vector<std::shared_ptr<IPA>> IPA::all() { return AppList::shared().apps(); }

std::shared_ptr<IPA> IPA::findWithBundleID(const std::string& bundleID) {
  std::shared_ptr<IPA> found = AppList::shared().app(bundleID);
  if (found == nullptr) throw Error::notFound(bundleID);
  return found;
}

NotificationPoster& IPA::poster() {
  static NotificationPoster poster;
  return poster;
}

Info IPA::info() const {
  std::error_code error;
  if (!std::filesystem::exists(appDir(), error) && !error) throw Error::cleanedUp();
  return infoManager_.info();
}

const BundleExecutables& IPA::executables() {
  if (!executables_) {
    executables_ = BundleExecutables::find(shared_from_this(), info().executable);
  }
  return *executables_;
}

std::shared_ptr<Executable> IPA::mainExecutable() {
  const std::lock_guard lock(executablesLock_);
  return executables().main;
}

std::vector<std::shared_ptr<Executable>> IPA::bundleExecutables() {
  const std::lock_guard lock(executablesLock_);
  return executables().programs;
}

std::vector<std::shared_ptr<Executable>> IPA::dynamicExecutables() {
  const std::lock_guard lock(executablesLock_);
  return executables().libraries;
}

void IPA::forgetExecutables() {
  const std::lock_guard lock(executablesLock_);
  executables_.reset();
}

std::optional<std::string> IPA::activeTweakID() const {
  try {
    const std::optional<TweakInfo> record = InstalledRecords::record(infoManager_.info().bundleID);
    return record ? record->tweakID : std::nullopt;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

Info IPA::infoForFileOperations() const {
  Info found = info();
  if (!isPlainComponent(found.bundleID)) throw Error::invalidFilename(found.bundleID);
  if (!FileOperations::isAvailable()) {
    throw Error::missing(std::filesystem::path(kFileOperationsPath).filename().string());
  }
  return found;
}

void IPA::setActiveTweak(const InstallableTweak* tweak) {
  installActiveTweak(infoForFileOperations(), tweak);
}

void IPA::copyCrashLogs(const std::filesystem::path& directory) const {
  FileOperations::fetchLogs(infoForFileOperations().bundleID, directory);
}

IPA::Error IPA::Error::missing(std::string name) {
  return {Case::missing, {"ipa.error.missing", "Missing %@"}, {std::move(name)}};
}

IPA::Error IPA::Error::errorReading(std::string name) {
  return {
      Case::errorReading, {"ipa.error.error_reading", "Error while reading %@"}, {std::move(name)}};
}

IPA::Error IPA::Error::notFound(std::string bundleID) {
  return {Case::notFound,
          {"ipa.error.not_found", "IPA not found with bundle ID: %@"},
          {std::move(bundleID)}};
}

IPA::Error IPA::Error::invalidFilename(std::string filename) {
  return {Case::invalidFilename,
          {"ipa.error.invalid_filename", "Invalid filename: %@"},
          {std::move(filename)}};
}

IPA::Error IPA::Error::invalidIPA() {
  return {Case::invalidIPA, {"ipa.error.invalid_ipa", "The ipa file was invalid"}};
}

IPA::Error IPA::Error::cleanedUp() {
  return {Case::cleanedUp, {"ipa.error.cleaned_up", "Cleaned up"}};
}

}  // namespace tavlen
