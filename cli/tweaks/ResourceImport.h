#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "cli/arguments/TypedValue.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen::cli {

/// Copies a user's file into a tweak's resources, under the file's own name, in two steps.
class ResourceImport {
 public:
  /// Reads `file` and writes a temporary copy next to its destination. A resource with the same
  /// bytes is kept; one with different bytes is replaced only if `replaces` is true, and otherwise
  /// throws std::runtime_error. Also throws std::runtime_error for a name outside the resources,
  /// and std::system_error.
  ResourceImport(const TweakFile& tweak, const std::string& file, bool replaces);

  /// Atomically renames the temporary file into place. Call once. Throws std::system_error.
  void commit();

 private:
  /// Null if the same file is already in place.
  std::unique_ptr<FileReplacement> replacement_;
};

/// Starts the imports of all files among `values`; the caller commits them. Warns on the standard
/// error stream of an image parameter's file that is not an image. Throws as ResourceImport() does,
/// and std::runtime_error for different files with the same name.
std::vector<ResourceImport> importResources(std::span<const TypedValue> values,
                                            const TweakFile& tweak, bool replaces);

}  // namespace tavlen::cli
