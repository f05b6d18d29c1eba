#pragma once

#include <memory>
#include <string>

#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen::cli {

/// A tweak with its manifest and its script, and the texts to name it in messages.
struct OpenedTweak {
  std::string argument;             ///< as the user wrote it
  std::string folder;               ///< the path as the user wrote it, or that of the stored tweak
  std::shared_ptr<TweakFile> file;  ///< never null
  TweakFile::Manifest manifest;     ///< as read when it was opened
  IgnoredKeys ignoredKeys;          ///< of the document
  /// The script; empty if it cannot be read, which openTweak() reports as a warning.
  std::string script;
  bool scriptIsUnreadable = false;  ///< whether reading the script failed

  /// `folder`, a slash and `name`: a file of the tweak, for messages.
  std::string pathOf(const std::string& name) const;
};

/// Opens a tweak as openedTweak() does, and reads its script. Throws std::runtime_error whose
/// message begins with the invalid file.
OpenedTweak openTweak(const std::string& argument);

}  // namespace tavlen::cli
