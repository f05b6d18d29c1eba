#include "tavlen/bundles/detail/TweakInstallation.h"

#include <any>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "tavlen/bundles/IPA.h"
#include "tavlen/bundles/InstallableTweak.h"
#include "tavlen/bundles/detail/PreviousInstallation.h"
#include "tavlen/device/AppControl.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/FileOperations.h"
#include "tavlen/device/InstalledRecords.h"
#include "tavlen/device/ProcessControl.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/base/UUID.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/foundation/tasks/NotificationPoster.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

/// One replacement of an app's active tweak: build the package, move the old installation aside,
/// move the package into place, write the record, notify observers, restart the app.
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
        installed_(InstalledRecords::record(app.bundleID)) {
    next_.bundleID = app.bundleID;
  }

  void replaceBy(const InstallableTweak* tweak) {
    TemporaryDirectory work(workParent());
    const fs::path package = work.path() / "package";
    const fs::path aside = work.path() / "aside";
    fs::create_directory(package);
    fs::create_directory(aside);
    if (tweak != nullptr) {
      next_.tweakID = tweak->id();
      tweak->package(app_, package, next_);
    }
    const std::string archive = encodeKeyedArchive(next_);
    const bool shouldRespring = iconChanges(package);
    // A trial run, on a folder that does not exist: a helper that cannot run here, such as one
    // built for another processor, must fail before anything is changed.
    FileOperations::cleanUp(target_.parent_path() / newUUIDText(), false);

    PreviousInstallation previous(target_, aside);
    try {
      previous.takeAway(tweak != nullptr);
      if (tweak != nullptr) putInPlace(package, archive);
    } catch (...) {
      // What cannot be put back is kept for a day.
      if (!previous.putBack(placed_)) work.release();
      throw;
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
  /// The folder that contains the installed tweaks, to work on the same volume. On a device
  /// resolve() does not follow links.
  fs::path workParent() const {
    fs::path installedTweaks = root_.resolve(kInstalledTweaksDir);
    if (root_.isDevice()) installedTweaks = fs::weakly_canonical(installedTweaks);
    return installedTweaks.parent_path();
  }

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

  /// The record comes last: after a failure there is none, rather than one of an incomplete tweak.
  void putInPlace(const fs::path& package, const std::string& archive) {
    for (const fs::directory_entry& entry : fs::directory_iterator(package)) {
      placed_.push_back(entry.path().filename());
      moveOrCopyByHelper(entry.path(), target_ / placed_.back());
    }
    const fs::path record = package / kTweakInfoFilename;
    replaceFile(record, archive);
    placed_.emplace_back(kTweakInfoFilename);
    moveOrCopyByHelper(record, target_ / kTweakInfoFilename);
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
  std::string directory_;               ///< the app's folder, as a path on the device
  fs::path target_;                     ///< the same folder, as a host path
  std::optional<TweakInfo> installed_;  ///< the record before
  TweakInfo next_;                      ///< the record after
  std::vector<fs::path> placed_;        ///< the names of what is in place, or being put there
};

}  // namespace

void installActiveTweak(const Info& target, const InstallableTweak* tweak) {
  Installation(target).replaceBy(tweak);
}

}  // namespace tavlen
