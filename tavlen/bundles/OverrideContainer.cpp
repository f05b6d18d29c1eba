#include "tavlen/bundles/OverrideContainer.h"

#include "tavlen/foundation/errors/MainBundle.h"

namespace tavlen {

namespace {

template <class... Kinds>
std::vector<OverrideKindInfo> section() {
  return {OverrideKindInfo{Kinds::identifier, Kinds::title,
                           [](const Info& info) -> Override { return Kinds::withInfo(info); }}...};
}

}  // namespace

std::string OverrideKindInfo::localizedName() const { return MainBundle::localizedString(title); }

const std::vector<std::vector<OverrideKindInfo>>& OverrideContainer::all() {
  static const std::vector<std::vector<OverrideKindInfo>> sections = {
      section<DisplayNameOverride, BundleNameOverride, BundleIDOverride>(),
      section<VersionOverride, BuildOverride>(),
      section<MinimumOSVersionOverride, IPadSupportOverride>(),
      section<OrientationsOverride, OrientationsIPadOverride>(),
  };
  return sections;
}

std::map<OverrideContainer::IndexPath, OverrideKindInfo> OverrideContainer::allByIndex() {
  std::map<IndexPath, OverrideKindInfo> result;
  for (std::size_t i = 0; i < all().size(); ++i) {
    for (std::size_t row = 0; row < all()[i].size(); ++row)
      result.emplace(IndexPath(i, row), all()[i][row]);
  }
  return result;
}

std::span<const std::string_view> OverrideContainer::supportedTypes() {
  return TypeKeyedFamily<Override>::kIdentifiers;
}

}  // namespace tavlen
