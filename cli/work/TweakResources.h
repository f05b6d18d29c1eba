#pragma once

#include <cstdint>
#include <filesystem>
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

/// The names of the resources from which values of the manifest are loaded.
std::set<std::string> namedResources(const TweakFile::Manifest& manifest);

/// To be called after an edit: notes the files of `before`, the namedResources() until then, that
/// the tweak still has but nothing uses any more. They are kept: whether the command or the user
/// put them there is not known. Throws std::system_error and DecodingError.
void noteUnusedResources(const TweakFile& tweak, const std::set<std::string>& before);

}  // namespace tavlen::cli
