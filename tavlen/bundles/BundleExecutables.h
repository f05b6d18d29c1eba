#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tavlen/bundles/Executable.h"
#include "tavlen/foundation/base/API.h"

namespace tavlen {

class IPA;

/// The Mach-O images of an app bundle, identified by their headers.
struct TAVLEN_API BundleExecutables {
  /// The main executable; never null.
  std::shared_ptr<Executable> main;
  /// Other images of the file type "execute", sorted by relative path.
  std::vector<std::shared_ptr<Executable>> programs;
  /// Images of the file types "dylib" and "bundle", sorted by relative path.
  std::vector<std::shared_ptr<Executable>> libraries;

  /// Searches the bundle of `ipa`, whose main executable is the file `mainName` in it. A file with
  /// several names is found once; symbolic links, and files that vanish during the search, are
  /// ignored. Blocks, and cannot be cancelled. Throws IPA::Error::invalidFilename,
  /// Executable::Error::missing, and IPA::Error::errorReading for a file or folder that cannot be
  /// read, because it may be an image.
  static BundleExecutables find(const std::shared_ptr<IPA>& ipa, const std::string& mainName);
};

}  // namespace tavlen
