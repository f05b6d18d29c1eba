#include "cli/work/ResourceImport.h"

#include <optional>
#include <stdexcept>

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::cli {

namespace fs = std::filesystem;

ResourceImport::ResourceImport(const TweakFile& tweak, const std::string& file, bool replaces) {
  const std::string contents = readFile(file);
  const std::string name = fs::path(file).filename().string();
  const DeviceRoot root = DeviceRoot::shared();
  const fs::path resources = root.follow(tweak.resourcesDir());
  fs::create_directories(resources);
  const std::optional<fs::path> place = pathInside(root, resources, name);
  if (!place) throw std::runtime_error(name + ": leads out of Resources");
  if (fs::exists(root.status(*place))) {
    if (readFile(openedFile(root, *place)) == contents) return;
    if (!replaces) {
      throw std::runtime_error("Resources/" + name +
                               " is there with other contents; --replace overwrites it");
    }
  }
  replacement_.reset(new FileReplacement(replacementOf(root, *place, contents)));
}

void ResourceImport::commit() {
  if (replacement_) replacement_->commit();
}

}  // namespace tavlen::cli
