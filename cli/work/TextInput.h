#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>

#include "tavlen/foundation/image/Image.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

/// The name of the text in a folder.
inline constexpr const char* kTextFile = "tweak.toml";

/// A tweak as a text describes it, with the other files of the tweak.
struct TextInput {
  /// With the types of all hooks, and without null hooks.
  TweakFile::Manifest manifest;
  /// The tweak's own icon.
  std::optional<Image> icon;
  /// The tweak's script, in UTF-8.
  std::optional<std::string> script;
  /// The folder that contains the text.
  std::filesystem::path folder;
  /// The attachedFiles() to copy from the folder.
  std::set<std::string> files;
  /// The folders, of kAttachedFolders, of which the tweak is to have no other files.
  std::set<std::string> wholeFolders;
};

/// Reads a text, or the tweak.toml in a folder; "-" is the standard input, whose folder is the
/// current one. A folder brings all files of its Resources and Executables, a text only the
/// resources that it names; the tweak in the folder `target`, unless that is empty, keeps its other
/// files. Types that the text leaves out are looked up by lookUpTypes(). Prints errors and warnings
/// with their places in the text; returns nothing after an error. Throws std::system_error for
/// files that the text does not name.
std::optional<TextInput> readTextInput(const std::string& argument,
                                       const std::filesystem::path& target);

}  // namespace tavlen::cli
