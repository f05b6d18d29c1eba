#pragma once

#include <memory>
#include <string>

#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen::cli {

/// A tweak that the user named, with errors that name its files.
struct OpenedTweak {
  std::string argument;  ///< as the user wrote it
  std::string folder;    ///< the path that the user gave, or of the stored tweak that was meant
  std::shared_ptr<TweakFile> file;
  TweakFile::Manifest manifest;
  /// The script; empty, after a warning on the standard error stream, where it cannot be read.
  std::string script;
  bool scriptIsUnreadable = false;

  /// `folder`, a slash and `name`: how messages name a file of the tweak.
  std::string pathOf(const std::string& name) const;
};

/// Opens and reads the tweak that `argument` names, as openedTweak() finds it. Throws
/// std::runtime_error whose text begins with the file at fault.
OpenedTweak openTweak(const std::string& argument);

}  // namespace tavlen::cli
