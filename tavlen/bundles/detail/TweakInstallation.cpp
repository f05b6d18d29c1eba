#include "tavlen/bundles/detail/TweakInstallation.h"

#include <any>
#include <filesystem>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/bundles/InstallableTweak.h"
#include "tavlen/device/AppControl.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/FileOperations.h"
#include "tavlen/device/InstalledRecords.h"
#include "tavlen/device/ProcessControl.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/foundation/tasks/NotificationPoster.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

bool isMissingPermission(const std::error_code& error) {
  return error == std::errc::permission_denied || error == std::errc::operation_not_permitted ||
         error == std::errc::read_only_file_system;
}

/// One replacement of an app's active tweak: build the package, remove the old installation, move
/// the package into place, write the record, notify observers, restart the app.
///
/// This process may lack the permission to change the installed tweaks. Each step tries the change
/// itself and, where only a permission is missing, has the helper make it: cleanUp() of
/// FileOperations finishes the removal, its copy() replaces a rename or a write.
class Installation {
 public:
  explicit Installation(const Info& app)
      : app_(app),
        directory_(InstalledRecords::directory(app.bundleID)),
        // A link in the place of the folder itself is not followed; the helper removes it.
        target_(root_.resolve(kInstalledTweaksDir) / app.bundleID),
        record_(target_ / kTweakInfoFilename),
        installed_(InstalledRecords::record(app.bundleID)) {
    next_.bundleID = app.bundleID;
  }

  void replaceBy(const InstallableTweak* tweak) {
    std::optional<TemporaryDirectory> package;
    if (tweak != nullptr) {
      fs::path installedTweaks = root_.resolve(kInstalledTweaksDir);
      // Package next to the folder that a link leads to, to be on the same volume. On a device
      // resolve() does not follow links.
      if (root_.isDevice()) installedTweaks = fs::weakly_canonical(installedTweaks);
      package.emplace(installedTweaks.parent_path());
      next_.tweakID = tweak->id();
      tweak->package(app_, package->path(), next_);
    }
    const bool shouldRespring = iconChanges(package ? package->path() : fs::path());
    removeInstalled();
    FileOperations::cleanUp(target_, tweak != nullptr);
    if (package) {
      moveIntoPlace(package->path());
      writeRecord(package->path());
    }
    try {
      announce();
    } catch (...) {
      // An observer's failure must not keep the app from being restarted.
      takeEffect(shouldRespring);
      throw;
    }
    takeEffect(shouldRespring);
  }

 private:
  /// Whether the icon changes. The record has the icon's final path, but its file is still in
  /// `package`.
  bool iconChanges(const fs::path& package) const {
    TweakInfo packaged = next_;
    const std::optional<fs::path> icon =
        next_.customIconURL ? next_.customIconURL->path() : std::nullopt;
    if (icon) {
      const fs::path relative = icon->lexically_relative(directory_);
      if (!relative.empty() && *relative.begin() != "..") {
        packaged.customIconURL = URL::fileURL(root_.devicePath(package / relative));
      }
    }
    return packaged.shouldRespringAfterChangingFromOther(installed_);
  }

  /// Removes the old installation as far as permissions allow; the helper removes the rest. The
  /// record goes first: after a failure there is no record, rather than one of an incomplete tweak.
  void removeInstalled() const {
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(target_, error))) return;
    remove(record_);
    for (const fs::directory_entry& entry : fs::directory_iterator(target_, error)) {
      remove(entry.path());
    }
    if (error && !isMissingPermission(error)) throw fs::filesystem_error("", target_, error);
  }

  static void remove(const fs::path& path) {
    std::error_code error;
    fs::remove_all(path, error);
    if (error && !isMissingPermission(error)) throw std::system_error(error, path.string());
  }

  void moveIntoPlace(const fs::path& package) const {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(package)) {
      const fs::path destination = target_ / entry.path().filename();
      fs::rename(entry.path(), destination, error);
      if (isMissingPermission(error)) {
        FileOperations::copy(entry.path(), destination);
      } else if (error) {
        throw std::system_error(error, destination.string());
      }
    }
  }

  void writeRecord(const fs::path& package) const {
    const std::string archive = encodeKeyedArchive(next_);
    try {
      replaceFile(record_, archive);
    } catch (const std::system_error& error) {
      if (!isMissingPermission(error.code())) throw;
      const fs::path source = package / kTweakInfoFilename;
      replaceFile(source, archive);
      FileOperations::copy(source, record_);
    }
  }

  void announce() const {
    std::map<std::string, std::any> userInfo = {{"bundleID", *next_.bundleID}};
    if (next_.tweakID) userInfo.emplace("tweakID", *next_.tweakID);
    IPA::poster().performNotificationPostingOperation([&] {
      NotificationCenter& center = NotificationCenter::default_();
      center.post({std::string(InstalledRecords::kDidChangeNotification), nullptr, userInfo});
      center.post({std::string(IPA::kFilesDidChangeNotification), nullptr, userInfo});
    });
  }

  void takeEffect(bool shouldRespring) const {
    if (shouldRespring) {
      respring();
    } else {
      killAppWithBundleID(*next_.bundleID);
    }
  }

  const DeviceRoot root_ = DeviceRoot::shared();
  const Info& app_;
  std::string directory_;  ///< the app's folder, as a path on the device
  fs::path target_;        ///< the same folder, as a host path
  fs::path record_;
  std::optional<TweakInfo> installed_;  ///< the record before
  TweakInfo next_;                      ///< the record after
};

}  // namespace

void installActiveTweak(const Info& target, const InstallableTweak* tweak) {
  Installation(target).replaceBy(tweak);
}

}  // namespace tavlen
