#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cli/arguments/TweakArgument.h"
#include "cli/tweaks/TextInput.h"
#include "cli/tweaks/TweakChanges.h"
#include "tavlen/foundation/image/Image.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

/// All that a tweak consists of, wherever it comes from.
struct TweakContents {
  TweakFile::Manifest manifest;
  std::optional<Image> icon;          ///< the tweak's own
  std::optional<std::string> script;  ///< in UTF-8
  /// The attachedFiles() that are known, and the folder that each path is relative to.
  std::map<std::string, std::filesystem::path> files;
  /// The folders, of kAttachedFolders, of which all files are known. A single text knows only those
  /// that it names; it says nothing of the others.
  std::set<std::string> wholeFolders;
  /// Keeps the files, if they are in a temporary folder.
  std::shared_ptr<const void> owner;
};

/// Reads the icon, the script and the names of the files. Throws std::system_error.
TweakContents contentsOf(const TweakFile::Opened& tweak);
/// What a text describes.
TweakContents contentsOf(const TextInput& input);
/// The same of a tweak in any form.
TweakContents contentsOf(const OpenedTweak& tweak);

/// The tweak's text; its icon and its script are named as in a tweak's folder. Throws
/// EncodingError.
std::string textOf(const TweakContents& contents);

/// As changesBetween() their manifests, with icons, scripts and files. A file counts as added or
/// removed where the side without it knows the whole folder. Throws std::system_error.
std::vector<TweakChange> changesBetween(const TweakContents& before, const TweakContents& after);

/// Changes the tweak folder `draft`, which holds `before`, to hold `after`. Posts nothing. Throws
/// std::system_error and EncodingError.
void writeContents(const std::filesystem::path& draft, const TweakContents& before,
                   const TweakContents& after);

/// Makes a tweak of `contents` in the new folder `draft`. Throws as writeContents() does.
void makeTweakFolder(const std::filesystem::path& draft, const TweakContents& contents);

/// Changes a stored tweak, which holds `before`, into `after`: a changed copy takes its place in
/// one step. Throws as writeContents() and TweakFile::replaceBy() do, and std::runtime_error in the
/// tweak's own folder.
void replaceContents(TweakFile& tweak, const TweakContents& before, const TweakContents& after);

}  // namespace tavlen::cli
