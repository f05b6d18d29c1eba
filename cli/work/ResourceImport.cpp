#include "cli/work/ResourceImport.h"

#include <optional>
#include <stdexcept>

#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::cli {

namespace fs = std::filesystem;

ResourceImport::ResourceImport(const TweakFile& tweak, const std::string& file, bool replaces) {
  const std::string contents = readFile(file);
  const std::string name = fs::path(file).filename().string();
  fs::create_directories(tweak.resourcesDir());
  const std::optional<fs::path> place = pathInside(tweak.resourcesDir(), name);
  if (!place) throw std::runtime_error(name + ": leads out of Resources");
  if (fs::exists(*place)) {
    if (readFile(*place) == contents) return;
    if (!replaces) {
      throw std::runtime_error("Resources/" + name +
                               " is there with other contents; --replace overwrites it");
    }
  }
  replacement_ = std::make_unique<FileReplacement>(*place, contents);
}

void ResourceImport::commit() {
  if (replacement_) replacement_->commit();
}

}  // namespace tavlen::cli
