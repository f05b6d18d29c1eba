#include "tavlen/bundles/InterfaceOrientation.h"

namespace tavlen {

std::string_view shortName(InterfaceOrientation orientation) {
  constexpr std::string_view kPrefix = "UIInterfaceOrientation";
  return rawValue(orientation).substr(kPrefix.size());
}

std::optional<InterfaceOrientation> orientationNamed(std::string_view name) {
  for (const InterfaceOrientation known : allCases<InterfaceOrientation>()) {
    if (name == shortName(known) || name == rawValue(known)) return known;
  }
  return std::nullopt;
}

}  // namespace tavlen
