#pragma once

#include <memory>
#include <string>

#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen::cli {

struct TextInput;

/// A tweak with its manifest and its script, and the texts to name it in messages.
struct OpenedTweak {
  std::string argument;             ///< as the user wrote it
  std::string folder;               ///< the path as the user wrote it, or that of the stored tweak
  std::shared_ptr<TweakFile> file;  ///< never null; read-only unless it is a stored tweak
  TweakFile::Manifest manifest;     ///< as read when it was opened
  IgnoredKeys ignoredKeys;          ///< of the document
  /// The script; empty if it cannot be read, which openTweak() reports as a warning.
  std::string script;
  bool scriptIsUnreadable = false;  ///< whether reading the script failed
  /// What was read, for a tweak from a text; else null. Messages then name places in the text.
  std::shared_ptr<const TextInput> text;
  /// The folder of `file`, for a tweak that is no stored one, with whose last copy it is removed.
  std::shared_ptr<const void> temporaryFolder;

  /// The tweak for what takes an opened one. Valid as long as this object.
  TweakFile::Opened opened() const { return {file, manifest}; }
  /// `folder`, a slash and `name`: a file of the tweak, for messages.
  std::string pathOf(const std::string& name) const;
};

}  // namespace tavlen::cli
