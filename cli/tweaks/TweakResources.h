#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

/// A file in a tweak's resources, and who uses it.
struct TweakResource {
  std::string name;                  ///< relative to the resources
  std::uint64_t size = 0;            ///< in bytes
  std::uint64_t uses = 0;            ///< as ResourceUse::count
  std::optional<std::string> place;  ///< as ResourceUse::first

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("name", &TweakResource::name), requiredField("size", &TweakResource::size),
        requiredField("uses", &TweakResource::uses), optionalField("place", &TweakResource::place)};
  }
};

/// Whether the file at `path` is hidden. Hidden files, such as those that keep a folder under
/// version control, are not meant for the app, and are no unused resources.
bool isHiddenFile(const std::filesystem::path& path);

/// The tweak's resources, sorted by name. Reads the script. Throws std::system_error.
std::vector<TweakResource> resourcesOf(const TweakFile::Opened& tweak);

/// Removes a resource. Throws std::system_error, and std::runtime_error if there is no such file.
void removeResource(const TweakFile& tweak, const std::string& name);

/// Tells of files that an edit leaves without use. They are kept: whether the command or the user
/// put them there is not known.
class UnusedResourceNote {
 public:
  /// Remembers the resources from which values of the tweak are loaded. To be made before the edit.
  explicit UnusedResourceNote(const TweakFile::Opened& tweak);

  /// Prints a note of each of them that exists but is not used any more. Reads the manifest again
  /// if there were any. Throws std::system_error and DecodingError.
  void print() const;

 private:
  std::shared_ptr<TweakFile> tweak_;
  std::set<std::string> before_;
};

}  // namespace tavlen::cli
