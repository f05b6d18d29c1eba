#include "tavlen/bundles/Override.h"

#include "tavlen/foundation/errors/MainBundle.h"

namespace tavlen {

DisplayNameOverride DisplayNameOverride::withInfo(const Info& info) { return {info.name()}; }

BundleNameOverride BundleNameOverride::withInfo(const Info& info) { return {info.bundleName()}; }

BundleIDOverride BundleIDOverride::withInfo(const Info& info) { return {info.bundleID}; }

VersionOverride VersionOverride::withInfo(const Info& info) { return {info.version()}; }

BuildOverride BuildOverride::withInfo(const Info& info) { return {info.build}; }

MinimumOSVersionOverride MinimumOSVersionOverride::withInfo(const Info& info) {
  return {info.minimumOSVersion};
}

IPadSupportOverride IPadSupportOverride::withInfo(const Info& info) {
  return {info.supportsIPad()};
}

OrientationsOverride OrientationsOverride::withInfo(const Info& info) {
  return {info.orientations().value_or(std::vector<InterfaceOrientation>())};
}

OrientationsIPadOverride OrientationsIPadOverride::withInfo(const Info& info) {
  return {info.ipadOrientations().value_or(OrientationsOverride::withInfo(info).value)};
}

std::string localizedName(const Override& override_) {
  return std::visit(
      []<OverrideKind Kind>(const Kind&) { return MainBundle::localizedString(Kind::title); },
      override_);
}

void applyTo(TweakInfo& /*tweakInfo*/, const Override& /*override_*/) {}

}  // namespace tavlen
