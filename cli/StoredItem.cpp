#include "cli/StoredItem.h"

#include <exception>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "tavlen/collections/TweakDiffNotifications.h"
#include "tavlen/foundation/NotificationCenter.h"
#include "tavlen/tweaks/TweakManager.h"
#include "tavlen/tweaks/TweaksDirectory.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

/// A tweak's folder may have any name where it is named by its path.
std::shared_ptr<TweakProtocol> itemAt(const fs::path& path) {
  std::error_code ignored;
  if (fs::is_directory(path, ignored)) return TweakFile::at(path);
  return TweakManager::tweakAt(path);
}

std::shared_ptr<TweakProtocol> itemNamed(const std::string& name) {
  std::vector<std::shared_ptr<TweakProtocol>> found;
  for (const std::shared_ptr<TweakProtocol>& item : TweakManager::allTweaks()) {
    try {
      if (item->genericManifest().genericConfiguration().name() == name) found.push_back(item);
    } catch (const std::exception&) {
      continue;  // gone, or broken, since it was listed
    }
  }
  if (found.empty()) {
    throw std::runtime_error("no tweak or collection of that identifier or name is stored");
  }
  if (found.size() > 1) {
    std::string identifiers;
    for (const auto& item : found) identifiers += "\n  " + item->id();
    throw std::runtime_error("several items have that name; name one by its identifier:" +
                             identifiers);
  }
  return found.front();
}

bool isStored(const std::string& id) {
  std::error_code ignored;
  return fs::symlink_status(TweaksDirectory::url() / id, ignored).type() !=
         fs::file_type::not_found;
}

std::shared_ptr<TweakProtocol> find(const std::string& text) {
  std::error_code ignored;
  const bool isPath = text.find('/') != std::string::npos || fs::exists(text, ignored);
  if (isPath) return itemAt(text);
  return isStored(text) ? TweakManager::tweakWithID(text) : itemNamed(text);
}

}  // namespace

std::shared_ptr<TweakProtocol> storedItem(const std::string& text) {
  try {
    return find(text);
  } catch (const std::exception& error) {
    throw std::runtime_error(text + ": " + error.what());
  }
}

std::shared_ptr<TweakFile> storedTweak(const std::string& text) {
  std::shared_ptr<TweakFile> tweak = std::dynamic_pointer_cast<TweakFile>(storedItem(text));
  if (!tweak) throw std::runtime_error(text + ": is a collection, not a tweak");
  return tweak;
}

void announce(TweakProtocol& item, GenericTweakDiffMode mode) {
  postTweakDiffs(NotificationCenter::default_(), {item.diffFor(mode)});
}

}  // namespace tavlen::cli
