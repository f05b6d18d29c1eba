#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/bundles/BundleExecutables.h"
#include "tavlen/bundles/InfoManager.h"
#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

class InstallableTweak;
class NotificationPoster;

/// A handle on one installed app. The app list keeps them; both go by the bundle's folder.
///
/// Threads: calls may run side by side; two that set the active tweak of one app must not.
class IPA : public std::enable_shared_from_this<IPA> {
 public:
  enum class ErrorCase { missing, errorReading, notFound, invalidFilename, invalidIPA, cleanedUp };
  class Error;

  /// The uniform type identifier of app archives.
  static constexpr std::string_view uti = "com.apple.itunes.ipa";
  /// Posted when the files of an app have changed. The user info is that of
  /// InstalledRecords::kDidChangeNotification.
  static constexpr std::string_view kFilesDidChangeNotification = "IPAFilesDidChange";

  /// Reads nothing.
  static std::shared_ptr<IPA> withAppDir(std::filesystem::path appDir);
  /// The app in a folder that a user names. Throws Error::invalidIPA unless it is a folder with an
  /// Info.plist.
  static std::shared_ptr<IPA> openAt(const std::filesystem::path& appDir);
  /// The apps of the shared app list, in its order.
  static std::vector<std::shared_ptr<IPA>> all();
  /// The app of that identifier in the shared app list. Throws Error::notFound.
  static std::shared_ptr<IPA> findWithBundleID(const std::string& bundleID);

  /// What the notices of active tweaks go through; it can be silenced.
  static NotificationPoster& poster();

  IPA(const IPA&) = delete;
  IPA& operator=(const IPA&) = delete;

  /// The bundle's folder.
  const std::filesystem::path& appDir() const { return infoManager_.bundleURL; }
  const InfoManager& infoManager() const { return infoManager_; }

  /// The bundle's Mach-O images. The first call looks through the bundle, and all three keep what
  /// it found; none does after an error. Throw Executable::Error::missing where the main executable
  /// is not there, Error::invalidFilename where its name leads elsewhere, Error::errorReading for
  /// an image that cannot be read, Error::cleanedUp once the bundle is gone, and what
  /// InfoManager::info() throws.
  std::shared_ptr<Executable> mainExecutable();
  /// The other programs, app extensions among them, by their relative paths.
  std::vector<std::shared_ptr<Executable>> bundleExecutables();
  /// The dynamic libraries and loadable bundles, by their relative paths.
  std::vector<std::shared_ptr<Executable>> dynamicExecutables();

  /// The identifier of the tweak that is installed for the app; nothing when none is, or when that
  /// cannot be told.
  std::optional<std::string> activeTweakID() const;

  /// Installs `tweak` in the place of the one that is active, or none when it is null; then ends
  /// the app, or restarts the home screen where the icon changes.
  ///
  /// Blocks. All that can fail is tried before the old installation is touched: the new one is made
  /// whole on the same volume, and the helper has shown that it runs. A later failure puts the old
  /// one back; where that fails, too, or the process dies at that moment, nothing is installed and
  /// no record says otherwise. Throws what InfoManager::info() throws, Error::invalidFilename for a
  /// bundle identifier that cannot name a folder, Error::missing where the file-operations helper
  /// is not there, Error::cleanedUp, Process::Error for the helper's failure, std::system_error for
  /// the file system's, and what the tweak's package() throws.
  void setActiveTweak(const InstallableTweak* tweak);

  /// Gathers the app's crash logs in the existing folder `directory`. Blocks. Throws
  /// Process::Error, and as setActiveTweak().
  void copyCrashLogs(const std::filesystem::path& directory) const;

 private:
  explicit IPA(std::filesystem::path appDir) : infoManager_(std::move(appDir)) {}

  /// The Info of a bundle that is still there.
  Info info() const;
  /// The Info whose identifier may become part of a path.
  Info infoForFileOperations() const;
  /// Fills the caches. To be called with their lock held.
  const BundleExecutables& executables();

  InfoManager infoManager_;
  std::mutex executablesLock_;
  std::optional<BundleExecutables> executables_;
};

class IPA::Error : public CasedError<IPA::ErrorCase> {
 public:
  static Error missing(std::string name);
  static Error errorReading(std::string name);
  static Error notFound(std::string bundleID);
  static Error invalidFilename(std::string filename);
  static Error invalidIPA();
  /// The app has been deleted.
  static Error cleanedUp();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
