#include "tavlen/tweaks/TweakManager.h"

#include <exception>
#include <string>
#include <system_error>

#include "tavlen/foundation/FileSystem.h"
#include "tavlen/tweaks/TweakFile.h"
#include "tavlen/tweaks/TweaksDirectory.h"

namespace tavlen {

std::vector<std::shared_ptr<TweakProtocol>> TweakManager::allTweaks() {
  std::vector<std::shared_ptr<TweakProtocol>> tweaks;
  std::error_code error;
  std::filesystem::directory_iterator entry(TweaksDirectory::url(), error);
  for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    try {
      tweaks.push_back(tweakAt(entry->path()));
    } catch (const std::exception&) {
      continue;
    }
  }
  return tweaks;
}

std::shared_ptr<TweakProtocol> TweakManager::tweakWithID(std::string_view id) {
  if (!isPlainComponent(id)) throw Error::unknownTweakType();
  return tweakAt(TweaksDirectory::url() / id);
}

std::shared_ptr<TweakProtocol> TweakManager::tweakAt(const std::filesystem::path& url) {
  if (TweakFile::isValidID(url.filename().native())) return TweakFile::at(url);
  throw Error::unknownTweakType();
}

TweakManager::Error TweakManager::Error::unknownTweakType() {
  return {Case::unknownTweakType, {"tweak_manager.error.unknown_tweak_type", "Unknown tweak type"}};
}

}  // namespace tavlen
