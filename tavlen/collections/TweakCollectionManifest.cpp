#include "tavlen/collections/TweakCollectionManifest.h"

#include <exception>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/items/TweaksDirectory.h"

namespace tavlen {

namespace {

/// The result of `open` for the folder of the stored tweak `id`. Nothing, as documented, if `open`
/// throws.
template <class Open>
auto openMember(const std::string& id, const Open& open)
    -> std::optional<decltype(open(TweaksDirectory::url()))> {
  // An imported collection may contain any text as an identifier; only stored tweaks are members.
  if (!TweakFile::isValidID(id) || !isPlainComponent(id)) return std::nullopt;
  try {
    return open(TweaksDirectory::url() / id);
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

std::vector<std::shared_ptr<TweakFile>> TweakCollection::Manifest::tweaks() const {
  std::vector<std::shared_ptr<TweakFile>> members;
  std::unordered_map<std::string_view, std::shared_ptr<TweakFile>> opened;
  for (const std::string& id : _tweaks) {
    const auto [place, isNew] = opened.try_emplace(id);
    if (isNew) place->second = openMember(id, TweakFile::at).value_or(nullptr);
    if (place->second != nullptr) members.push_back(place->second);
  }
  return members;
}

std::vector<TweakFile::Opened> TweakCollection::Manifest::openedTweaks() const {
  std::vector<TweakFile::Opened> members;
  std::unordered_set<std::string_view> seen;
  for (const std::string& id : _tweaks) {
    if (!seen.insert(id).second) continue;
    if (auto member = openMember(id, TweakFile::open)) members.push_back(std::move(*member));
  }
  return members;
}

void TweakCollection::Manifest::setTweaks(std::span<const std::shared_ptr<TweakFile>> tweaks) {
  _tweaks.clear();
  _tweaks.reserve(tweaks.size());
  for (const std::shared_ptr<TweakFile>& tweak : tweaks) _tweaks.push_back(tweak->id());
}

}  // namespace tavlen
