#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen::cli {

/// A user's file on its way into a tweak's resources, under its own name.
class ResourceImport {
 public:
  /// Reads `file` and lays its bytes beside their place. A file that is there with the same bytes
  /// is kept; one with others is replaced only if `replaces` says so. Throws std::system_error, and
  /// std::runtime_error for a file that is not to be replaced and a name that leads out of the
  /// resources.
  ResourceImport(const TweakFile& tweak, const std::string& file, bool replaces);

  /// Gives the file its name. To be called once. Throws std::system_error.
  void commit();

 private:
  /// None where the file is there already.
  std::unique_ptr<FileReplacement> replacement_;
};

}  // namespace tavlen::cli
