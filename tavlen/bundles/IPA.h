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
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

class InstallableTweak;
class NotificationPoster;

/// A handle on an installed app, identified by its bundle's folder. AppList caches handles.
///
/// Threads: calls may run concurrently, except that two must not set the active tweak of one app,
/// in one process or in two.
class TAVLEN_API IPA : public std::enable_shared_from_this<IPA> {
 public:
  /// The cases of Error.
  enum class ErrorCase { missing, errorReading, notFound, invalidFilename, invalidIPA, cleanedUp };
  class Error;

  /// The uniform type identifier of app archives.
  static constexpr std::string_view uti = "com.apple.itunes.ipa";
  /// Posted when files of an app have changed. The user info is that of
  /// InstalledRecords::kDidChangeNotification.
  static constexpr std::string_view kFilesDidChangeNotification = "IPAFilesDidChange";

  /// A handle on the app in `appDir`. Reads nothing.
  static std::shared_ptr<IPA> withAppDir(std::filesystem::path appDir);
  /// A handle on the app in a folder that the user names. Throws Error::invalidIPA unless it is a
  /// folder with an Info.plist.
  static std::shared_ptr<IPA> openAt(const std::filesystem::path& appDir);
  /// The apps of the shared app list, in its order.
  static std::vector<std::shared_ptr<IPA>> all();
  /// The app with that identifier in the shared app list. Throws Error::notFound.
  static std::shared_ptr<IPA> findWithBundleID(const std::string& bundleID);

  /// Posts the notifications about active tweaks; can be silenced.
  static NotificationPoster& poster();

  IPA(const IPA&) = delete;
  IPA& operator=(const IPA&) = delete;

  /// The bundle's folder, as a host path.
  const std::filesystem::path& appDir() const { return infoManager_.bundleURL; }
  /// Reads the bundle's Info.plist and icons.
  const InfoManager& infoManager() const { return infoManager_; }

  /// The bundle's main program. The first call of this function or of the two below searches the
  /// bundle and caches the result; after an error, the next call searches again. The search blocks
  /// while it reads the beginning of every file, and cannot be cancelled. Throws
  /// Executable::Error::missing when the main executable does not exist, Error::invalidFilename
  /// when its name leads out of the bundle, Error::errorReading for an image that cannot be read,
  /// Error::cleanedUp once the bundle is deleted, and the errors of InfoManager::info().
  std::shared_ptr<Executable> mainExecutable();
  /// The other programs, including app extensions, sorted by relative path. Errors as above.
  std::vector<std::shared_ptr<Executable>> bundleExecutables();
  /// The dynamic libraries and loadable bundles, sorted by relative path. Errors as above.
  std::vector<std::shared_ptr<Executable>> dynamicExecutables();
  /// Empties the cache of the three functions above, after the app has been updated. Objects that
  /// they returned stay as they are. Waits for a search that another thread makes.
  void forgetExecutables();

  /// The identifier of the tweak installed for the app. Nothing when none is installed or the
  /// record cannot be read.
  std::optional<std::string> activeTweakID() const;

  /// Replaces the active tweak by `tweak`, or removes it when `tweak` is null. Then ends the app,
  /// or restarts the home screen if the icon changes.
  ///
  /// Blocks, and cannot be cancelled. Everything that can fail is tried before the old installation
  /// is touched: the new one is complete on the same volume, and the helper has shown that it runs.
  /// A later failure restores the old one; if that fails as well, or the process dies at that
  /// moment, nothing is installed and no record remains. Throws the errors of InfoManager::info(),
  /// Error::invalidFilename for a bundle identifier that cannot be the name of a folder,
  /// Error::missing when the file-operations helper does not exist, Error::cleanedUp,
  /// Process::Error when the helper fails, std::system_error for the file system's errors, and the
  /// errors of the tweak's package().
  void setActiveTweak(const InstallableTweak* tweak);

  /// Copies the app's crash logs to the existing folder `directory`. Blocks, and cannot be
  /// cancelled. Throws Process::Error, and otherwise as setActiveTweak().
  void copyCrashLogs(const std::filesystem::path& directory) const;

 private:
  explicit IPA(std::filesystem::path appDir) : infoManager_(std::move(appDir)) {}

  /// The Info; throws Error::cleanedUp when the bundle is deleted.
  Info info() const;
  /// The Info; throws unless its identifier can be a path component.
  Info infoForFileOperations() const;
  /// Fills the cache. The cache's lock must be held.
  const BundleExecutables& executables();

  InfoManager infoManager_;
  std::mutex executablesLock_;
  std::optional<BundleExecutables> executables_;
};

/// The errors of IPA.
class TAVLEN_API IPA::Error : public CasedError<IPA::ErrorCase> {
 public:
  /// The file-operations helper `name` does not exist.
  static Error missing(std::string name);
  /// The file `name` cannot be read.
  static Error errorReading(std::string name);
  /// The app list has no app with that identifier.
  static Error notFound(std::string bundleID);
  /// A stored name cannot be used as a file name.
  static Error invalidFilename(std::string filename);
  /// The folder is not an app bundle.
  static Error invalidIPA();
  /// The app has been deleted.
  static Error cleanedUp();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
