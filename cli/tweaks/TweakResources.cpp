#include "cli/tweaks/TweakResources.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/terminal/Console.h"
#include "cli/tweaks/AttachedFiles.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/parameters/ParameterPath.h"
#include "tavlen/tweaks/ResourceUse.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

std::string scriptOf(const TweakFile& tweak) { return tweak.readScript().value_or(std::string()); }

/// The regular file of that name in the resources; nothing without such a file.
std::optional<fs::path> fileOf(const TweakFile& tweak, const std::string& name) {
  const DeviceRoot root = DeviceRoot::shared();
  auto file = pathInside(root, tweak.resourcesDir(), name);
  if (!file || !fs::is_regular_file(root.status(*file))) return std::nullopt;
  return file;
}

/// The names of the resources from which values of the manifest are loaded.
std::set<std::string> namedResources(const TweakFile::Manifest& manifest) {
  std::set<std::string> names;
  for (const BoxedOptional<Hook>& hook : manifest._hooks) {
    if (!hook) continue;
    for (const auto& entry : hook->_args) {
      forEachParameter(entry.second.value, [&](const Parameter& each, const ParameterPath&) {
        if (const std::string* name = resourceNameIn(each))
          names.insert(fs::path(*name).lexically_normal().string());
      });
    }
  }
  return names;
}

}  // namespace

bool isHiddenFile(const fs::path& path) { return path.filename().string().starts_with('.'); }

std::vector<TweakResource> resourcesOf(const TweakFile::Opened& tweak) {
  const fs::path top = TweakFile::resourcesFolder;
  std::vector<std::string> names;
  for (const std::string& file : attachedFiles(
           tweak.file->url(), top.string(), [&](const std::string&name, std::error_code error) {
             if (error) throwUnreadable((tweak.file->url() / name).string(), error);
           }))
    names.push_back(fs::path(file).lexically_relative(top).string());
  std::vector<ResourceUse> uses = usesOf(names, tweak.manifest, scriptOf(*tweak.file));
  std::vector<TweakResource> resources;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto file = fileOf(*tweak.file, names[i]);
    TweakResource& resource = resources.emplace_back();
    resource.name = std::move(names[i]);
    resource.size = file ? fs::file_size(*file) : 0;
    resource.uses = uses[i].count;
    if (uses[i].count != 0) resource.place = std::move(uses[i].first);
  }
  return resources;
}

void removeResource(const TweakFile& tweak, const std::string& name) {
  const fs::path shown = fs::path(TweakFile::resourcesFolder) / name;
  // Not the file that a link leads to, but the link.
  const DeviceRoot root = DeviceRoot::shared();
  if (!fileOf(tweak, name)) throw std::runtime_error(shown.string() + ": no such resource");
  const fs::path entry = root.followParent(tweak.resourcesDir() / name);
  std::error_code error;
  fs::remove(entry, error);
  if (error) throw std::system_error(error, shown.string());
  // Folders that this leaves empty; removing another one fails.
  fs::path folder = entry.parent_path();
  for (fs::path rest = fs::path(name).parent_path(); !rest.empty(); rest = rest.parent_path()) {
    if (!fs::remove(folder, error)) break;
    folder = folder.parent_path();
  }
}

UnusedResourceNote::UnusedResourceNote(const TweakFile::Opened& tweak)
    : tweak_(tweak.file), before_(namedResources(tweak.manifest)) {}

void UnusedResourceNote::print() const {
  if (before_.empty()) return;
  const TweakFile::Manifest manifest = tweak_->manifest();
  const std::set<std::string> after = namedResources(manifest);
  std::vector<std::string> names;
  std::set_difference(before_.begin(), before_.end(), after.begin(), after.end(),
                      std::back_inserter(names));
  if (names.empty()) return;
  const std::vector<ResourceUse> uses = usesOf(names, manifest, scriptOf(*tweak_));
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (uses[i].count != 0 || !fileOf(*tweak_, names[i])) continue;
    printNote((fs::path(TweakFile::resourcesFolder) / names[i]).string() +
              " is no longer used, but is installed anyway; resource prune removes such files");
  }
}

}  // namespace tavlen::cli
