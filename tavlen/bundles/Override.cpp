#include "tavlen/bundles/Override.h"

#include "tavlen/foundation/errors/MainBundle.h"

namespace tavlen {

std::string localizedName(const Override& override_) {
  return std::visit(
      []<class Kind>(const Kind&) { return MainBundle::localizedString(Kind::title); }, override_);
}

void applyTo(TweakInfo& /*tweakInfo*/, const Override& /*override_*/) {}

}  // namespace tavlen
