#include "tavlen/bundles/detail/TweakInstallation.h"

#include <any>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>

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

class Installation {
 public:
  explicit Installation(const Info& app)
      : app_(app),
        directory_(InstalledRecords::directory(app.bundleID)),
        // A link in the place of the folder itself is not followed: it is the helper's to remove.
        target_(root_.resolve(kInstalledTweaksDir) / app.bundleID),
        installed_(InstalledRecords::record(app.bundleID)) {
    next_.bundleID = app.bundleID;
  }

  void replaceBy(const InstallableTweak* tweak) {
    const TemporaryDirectory work(workParent());
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
    // A helper that does not run here, as one made for another processor, is to cost nothing: it
    // shows itself on a folder that does not exist.
    FileOperations::cleanUp(target_.parent_path() / newUUIDText(), false);

    PreviousInstallation previous(target_, aside);
    try {
      previous.moveAside();
      FileOperations::cleanUp(target_, tweak != nullptr);
      if (tweak != nullptr) putInPlace(package, archive);
    } catch (...) {
      previous.putBack();
      throw;
    }
    try {
      announce();
    } catch (...) {
      // An observer's trouble is not the app's.
      takeEffect(shouldRespring);
      throw;
    }
    takeEffect(shouldRespring);
  }

 private:
  /// Next to the folder of installed tweaks, for the same volume; a link to that folder is
  /// followed.
  fs::path workParent() const {
    fs::path installedTweaks = root_.resolve(kInstalledTweaksDir);
    if (root_.isDevice()) installedTweaks = fs::weakly_canonical(installedTweaks);
    return installedTweaks.parent_path();
  }

  /// The record names its icon where it will lie; now it still lies in `package`.
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

  /// The record comes last, so that a failure leaves none rather than one of half a tweak.
  void putInPlace(const fs::path& package, const std::string& archive) const {
    for (const fs::directory_entry& entry : fs::directory_iterator(package)) {
      moveOrCopyByHelper(entry.path(), target_ / entry.path().filename());
    }
    const fs::path record = package / kTweakInfoFilename;
    replaceFile(record, archive);
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
  std::string directory_;               ///< of the app, as the device names it
  fs::path target_;                     ///< the same, here
  std::optional<TweakInfo> installed_;  ///< before
  TweakInfo next_;                      ///< after
};

}  // namespace

void installActiveTweak(const Info& target, const InstallableTweak* tweak) {
  Installation(target).replaceBy(tweak);
}

}  // namespace tavlen
