#include "tavlen/bundles/OverrideContainer.h"

#include "tavlen/foundation/errors/MainBundle.h"

namespace tavlen {

namespace {

template <class... Kinds>
std::vector<OverrideKindInfo> section() {
  return {OverrideKindInfo{Kinds::identifier, Kinds::title,
                           [](const Info& info) -> Override { return Kinds::withInfo(info); }}...};
}

template <std::size_t... I>
OverrideContainer emptyOfKind(std::size_t index, std::index_sequence<I...> /*kinds*/) {
  OverrideContainer result;
  ((index == I ? (void)result.value.emplace<I>() : void()), ...);
  return result;
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

OverrideContainer OverrideContainer::emptyOfKind(std::size_t index) {
  return tavlen::emptyOfKind(index, std::make_index_sequence<std::variant_size_v<Override>>());
}

}  // namespace tavlen
