#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/terminal/HiddenFolder.h"
#include "cli/terminal/ProgressLine.h"
#include "tavlen/bundles/IPA.h"
#include "tavlen/foundation/tasks/Progress.h"

namespace tavlen::cli {

/// The help text of the argument APP of commands that need only the app's files.
inline constexpr const char* kReadAppHelp =
    "The app: its bundle identifier, the path of its bundle folder, or an archive (.ipa)";

/// An app whose files are read: one of the device, one in a folder, or one in an archive (.ipa). Of
/// an archive, the files that are asked for are unpacked into a temporary folder, which is removed
/// with the object, also when SIGHUP, SIGINT or SIGTERM ends the command (RAII). shownPath() leaves
/// the temporary folder out of paths.
///
/// Errors are those of appArgument(), except that an unknown identifier is std::runtime_error; for
/// an archive std::runtime_error and std::system_error with its path. While unpacking takes long, a
/// ProgressLine shows it, unless there is a `parent`, of which it becomes one unit.
class AppForReading {
 public:
  /// The files of the app that are read, next to its Info.plist: none, those of its icon, or its
  /// Mach-O images.
  enum class Files { info, icon, images };

  /// `text` is what appArgument() takes, or an archive. `iconName` as for
  /// InfoManager::visitIconFiles().
  AppForReading(const std::string& text, Files files,
                const std::optional<std::string>& iconName = std::nullopt,
                const std::shared_ptr<Progress>& parent = nullptr);
  AppForReading(const AppForReading&) = delete;
  AppForReading& operator=(const AppForReading&) = delete;

  /// The app; valid as long as this object. Never null.
  const std::shared_ptr<IPA>& ipa() const { return ipa_; }
  /// For each file of an archive that may be an image, but cannot be read and is left out, a
  /// sentence that says why.
  const std::vector<std::string>& faults() const { return faults_; }
  /// Whether it is an unpacked copy.
  bool isFromArchive() const { return folder_.has_value(); }

 private:
  void unpack(Files files, const std::optional<std::string>& iconName,
              const std::shared_ptr<Progress>& parent);

  std::string text_;
  std::optional<ProgressLine> line_;    ///< destroyed last, so that no signal ends the removal
  std::optional<HiddenFolder> folder_;  ///< nothing without an archive
  std::shared_ptr<IPA> ipa_;
  std::vector<std::string> faults_;
};

/// The bundle identifier of the app that an item is for: as bundleIDOf(), or that of the app in an
/// archive. Throws as AppForReading and bundleIDOf() do.
std::string targetBundleID(const std::string& text);

}  // namespace tavlen::cli
