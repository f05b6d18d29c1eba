#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tavlen/bundles/Executable.h"

namespace tavlen {

class IPA;

/// The Mach-O images of an app bundle, told by their headers.
struct BundleExecutables {
  std::shared_ptr<Executable> main;
  /// Other images of the file type "execute", sorted by relative path.
  std::vector<std::shared_ptr<Executable>> programs;
  /// Images of the file types "dylib" and "bundle", sorted by relative path.
  std::vector<std::shared_ptr<Executable>> libraries;

  /// Looks through the bundle of `ipa`, whose main executable is the file `mainName` in it. Each
  /// file is looked at once, whatever names it has; symbolic links are left out. A file that goes
  /// away meanwhile is left out, too. Throws IPA::Error::invalidFilename,
  /// Executable::Error::missing, and IPA::Error::errorReading for a file or folder that cannot be
  /// read: it may be an image.
  static BundleExecutables find(const std::shared_ptr<IPA>& ipa, const std::string& mainName);
};

}  // namespace tavlen
