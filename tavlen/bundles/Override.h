#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "tavlen/bundles/Info.h"
#include "tavlen/bundles/InterfaceOrientation.h"
#include "tavlen/device/TweakInfo.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/SemanticVersion.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"
#include "tavlen/foundation/errors/LocalizedError.h"

namespace tavlen {

/// An override of one kind: a value, stored under the key "value" and absent only where it is
/// optional. `Kind` gives the name of the kind, its title for the user, and the app's current
/// value, which an override of the kind begins with.
template <class Kind>
struct OverrideOfKind {
  static constexpr std::string_view typeName = Kind::typeName;
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  static constexpr LocalizedText title = Kind::title;

  using Value = decltype(Kind::currentValue(std::declval<const Info&>()));
  Value value{};

  /// Made of the app's current value.
  static OverrideOfKind withInfo(const Info& info) { return {Kind::currentValue(info)}; }

  static constexpr auto codedFields() {
    if constexpr (requires(Value held) { held.has_value(); }) {
      return std::tuple{optionalField("value", &OverrideOfKind::value)};
    } else {
      return std::tuple{requiredField("value", &OverrideOfKind::value)};
    }
  }
  bool operator==(const OverrideOfKind&) const = default;
};

struct DisplayNameKind {
  static constexpr std::string_view typeName = "DisplayNameOverride";
  static constexpr LocalizedText title = {"override_title.display_name", "Display Name"};
  static std::string currentValue(const Info& info) { return info.name(); }
};
/// The name under the icon.
using DisplayNameOverride = OverrideOfKind<DisplayNameKind>;

struct BundleNameKind {
  static constexpr std::string_view typeName = "BundleNameOverride";
  static constexpr LocalizedText title = {"override_title.bundle_name", "Bundle Name"};
  static std::string currentValue(const Info& info) { return info.bundleName(); }
};
/// The short name.
using BundleNameOverride = OverrideOfKind<BundleNameKind>;

struct BundleIDKind {
  static constexpr std::string_view typeName = "BundleIDOverride";
  static constexpr LocalizedText title = {"override_title.bundle_id", "Bundle ID"};
  static std::string currentValue(const Info& info) { return info.bundleID; }
};
/// The identifier.
using BundleIDOverride = OverrideOfKind<BundleIDKind>;

struct VersionKind {
  static constexpr std::string_view typeName = "VersionOverride";
  static constexpr LocalizedText title = {"override_title.version", "Version"};
  static std::string currentValue(const Info& info) { return info.version(); }
};
/// The version that users see.
using VersionOverride = OverrideOfKind<VersionKind>;

struct BuildKind {
  static constexpr std::string_view typeName = "BuildOverride";
  static constexpr LocalizedText title = {"override_title.build", "Build"};
  static std::string currentValue(const Info& info) { return info.build; }
};
/// The build number.
using BuildOverride = OverrideOfKind<BuildKind>;

struct MinimumOSVersionKind {
  static constexpr std::string_view typeName = "MinimumOSVersionOverride";
  static constexpr LocalizedText title = {"override_title.min_os_version", "Min OS Version"};
  static std::optional<SemanticVersion> currentValue(const Info& info) {
    return info.minimumOSVersion;
  }
};
/// The oldest system that runs the app; an absent value asks for none.
using MinimumOSVersionOverride = OverrideOfKind<MinimumOSVersionKind>;

struct IPadSupportKind {
  static constexpr std::string_view typeName = "IPadSupportOverride";
  static constexpr LocalizedText title = {"override_title.ipad_support", "iPad Support"};
  static bool currentValue(const Info& info) { return info.supportsIPad(); }
};
/// Whether the app runs as an iPad app.
using IPadSupportOverride = OverrideOfKind<IPadSupportKind>;

struct OrientationsKind {
  static constexpr std::string_view typeName = "OrientationsOverride";
  static constexpr LocalizedText title = {"override_title.orientations", "Orientations"};
  static std::vector<InterfaceOrientation> currentValue(const Info& info) {
    return info.orientations().value_or(std::vector<InterfaceOrientation>());
  }
};
/// The orientations on an iPhone. An empty list is a value like any other.
using OrientationsOverride = OverrideOfKind<OrientationsKind>;

struct OrientationsIPadKind {
  static constexpr std::string_view typeName = "OrientationsIPadOverride";
  static constexpr LocalizedText title = {"override_title.orientations_ipad",
                                          "Orientations (iPad)"};
  static std::vector<InterfaceOrientation> currentValue(const Info& info) {
    return info.ipadOrientations().value_or(OrientationsKind::currentValue(info));
  }
};
/// The orientations on an iPad; made of the iPhone list where the app has none of its own.
using OrientationsIPadOverride = OverrideOfKind<OrientationsIPadKind>;

/// One edit of the target app's Info.plist that a tweak carries.
using Override = std::variant<DisplayNameOverride, BundleNameOverride, BundleIDOverride,
                              VersionOverride, BuildOverride, MinimumOSVersionOverride,
                              IPadSupportOverride, OrientationsOverride, OrientationsIPadOverride>;

/// The kind's title for the user.
std::string localizedName(const Override& override_);

/// Called on the record of an installation for each override that it carries. No kind changes the
/// record: overrides act on the Info.plist alone.
void applyTo(TweakInfo& tweakInfo, const Override& override_);

}  // namespace tavlen
