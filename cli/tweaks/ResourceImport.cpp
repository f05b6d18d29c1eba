#include "cli/tweaks/ResourceImport.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <variant>

#include "cli/terminal/Console.h"
#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/image/Image.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

/// Throws for two different files with the same name: both would become the same resource.
void checkNames(std::span<const TypedValue> values) {
  std::map<fs::path, std::string> files;
  for (const TypedValue& value : values) {
    if (value.file.empty()) continue;
    const fs::path name = fs::path(value.file).filename();
    const auto [other, isNew] = files.try_emplace(name, value.file);
    if (!isNew && readFile(other->second) != readFile(value.file)) {
      throw std::runtime_error(other->second + " and " + value.file + ": would both be stored as " +
                               name.string());
    }
  }
}

void warnUnlessImage(const TypedValue& value) {
  if (value.file.empty() || !std::holds_alternative<ImageParameter>(value.parameter)) return;
  if (!Image::decode(readFile(value.file))) {
    printWarning(value.file + ": is not a PNG or JPEG image");
  }
}

}  // namespace

ResourceImport::ResourceImport(const TweakFile& tweak, const std::string& file, bool replaces) {
  const std::string contents = readFile(file);
  const std::string name = fs::path(file).filename().string();
  const DeviceRoot root = DeviceRoot::shared();
  const fs::path resources = root.follow(tweak.resourcesDir());
  fs::create_directories(resources);
  const std::optional<fs::path> place = pathInside(root, resources, name);
  if (!place) throw std::runtime_error(name + ": would lie outside Resources");
  if (fs::exists(root.status(*place))) {
    if (readFile(openedFile(root, *place)) == contents) return;
    if (!replaces) {
      throw std::runtime_error("Resources/" + name +
                               " already exists and differs; use --replace to overwrite it");
    }
  }
  replacement_ = replacementOf(root, *place, contents);
}

void ResourceImport::commit() {
  if (replacement_) replacement_->commit();
}

std::vector<ResourceImport> importResources(std::span<const TypedValue> values,
                                            const TweakFile& tweak, bool replaces) {
  checkNames(values);
  std::vector<ResourceImport> imports;
  for (const TypedValue& value : values) {
    warnUnlessImage(value);
    if (!value.file.empty()) imports.emplace_back(tweak, value.file, replaces);
  }
  return imports;
}

}  // namespace tavlen::cli
