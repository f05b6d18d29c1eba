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
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/SemanticVersion.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"
#include "tavlen/foundation/errors/LocalizedError.h"

namespace tavlen {

/// An override of one kind: a value, stored under the key "value", which may be absent only if it
/// is optional. `Kind` supplies the kind's name, its title for the user, and the app's current
/// value, with which a new override starts.
template <class Kind>
struct OverrideOfKind {
  /// The kind's full name.
  static constexpr std::string_view typeName = Kind::typeName;
  /// The stored identifier of the kind.
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  /// The kind's title for the user.
  static constexpr LocalizedText title = Kind::title;

  /// The type of the overriding value.
  using Value = decltype(Kind::currentValue(std::declval<const Info&>()));
  /// The overriding value.
  Value value{};

  /// An override with the app's current value.
  static OverrideOfKind withInfo(const Info& info) { return {Kind::currentValue(info)}; }

  /// The coded fields.
  static constexpr auto codedFields() {
    if constexpr (requires(Value held) { held.has_value(); }) {
      return std::tuple{optionalField("value", &OverrideOfKind::value)};
    } else {
      return std::tuple{requiredField("value", &OverrideOfKind::value)};
    }
  }
  bool operator==(const OverrideOfKind&) const = default;
};

/// The kind of DisplayNameOverride.
struct TAVLEN_API DisplayNameKind {
  static constexpr std::string_view typeName = "DisplayNameOverride";
  static constexpr LocalizedText title = {"override_title.display_name", "Display Name"};
  static std::string currentValue(const Info& info) { return info.name(); }
};
/// Overrides the name under the icon.
using DisplayNameOverride = OverrideOfKind<DisplayNameKind>;

/// The kind of BundleNameOverride.
struct TAVLEN_API BundleNameKind {
  static constexpr std::string_view typeName = "BundleNameOverride";
  static constexpr LocalizedText title = {"override_title.bundle_name", "Bundle Name"};
  static std::string currentValue(const Info& info) { return info.bundleName(); }
};
/// Overrides the short name.
using BundleNameOverride = OverrideOfKind<BundleNameKind>;

/// The kind of BundleIDOverride.
struct TAVLEN_API BundleIDKind {
  static constexpr std::string_view typeName = "BundleIDOverride";
  static constexpr LocalizedText title = {"override_title.bundle_id", "Bundle ID"};
  static std::string currentValue(const Info& info) { return info.bundleID; }
};
/// Overrides the bundle identifier.
using BundleIDOverride = OverrideOfKind<BundleIDKind>;

/// The kind of VersionOverride.
struct TAVLEN_API VersionKind {
  static constexpr std::string_view typeName = "VersionOverride";
  static constexpr LocalizedText title = {"override_title.version", "Version"};
  static std::string currentValue(const Info& info) { return info.version(); }
};
/// Overrides the version that users see.
using VersionOverride = OverrideOfKind<VersionKind>;

/// The kind of BuildOverride.
struct TAVLEN_API BuildKind {
  static constexpr std::string_view typeName = "BuildOverride";
  static constexpr LocalizedText title = {"override_title.build", "Build"};
  static std::string currentValue(const Info& info) { return info.build; }
};
/// Overrides the build number.
using BuildOverride = OverrideOfKind<BuildKind>;

/// The kind of MinimumOSVersionOverride.
struct TAVLEN_API MinimumOSVersionKind {
  static constexpr std::string_view typeName = "MinimumOSVersionOverride";
  static constexpr LocalizedText title = {"override_title.min_os_version", "Min OS Version"};
  static std::optional<SemanticVersion> currentValue(const Info& info) {
    return info.minimumOSVersion;
  }
};
/// Overrides the oldest system that runs the app; an absent value removes the requirement.
using MinimumOSVersionOverride = OverrideOfKind<MinimumOSVersionKind>;

/// The kind of IPadSupportOverride.
struct TAVLEN_API IPadSupportKind {
  static constexpr std::string_view typeName = "IPadSupportOverride";
  static constexpr LocalizedText title = {"override_title.ipad_support", "iPad Support"};
  static bool currentValue(const Info& info) { return info.supportsIPad(); }
};
/// Overrides whether the app runs as an iPad app.
using IPadSupportOverride = OverrideOfKind<IPadSupportKind>;

/// The kind of OrientationsOverride.
struct TAVLEN_API OrientationsKind {
  static constexpr std::string_view typeName = "OrientationsOverride";
  static constexpr LocalizedText title = {"override_title.orientations", "Orientations"};
  static std::vector<InterfaceOrientation> currentValue(const Info& info) {
    return info.orientations().value_or(std::vector<InterfaceOrientation>());
  }
};
/// Overrides the orientations on an iPhone. An empty list is a valid value.
using OrientationsOverride = OverrideOfKind<OrientationsKind>;

/// The kind of OrientationsIPadOverride.
struct TAVLEN_API OrientationsIPadKind {
  static constexpr std::string_view typeName = "OrientationsIPadOverride";
  static constexpr LocalizedText title = {"override_title.orientations_ipad",
                                          "Orientations (iPad)"};
  static std::vector<InterfaceOrientation> currentValue(const Info& info) {
    return info.ipadOrientations().value_or(OrientationsKind::currentValue(info));
  }
};
/// Overrides the orientations on an iPad. A new one starts with the iPhone's list if the app has no
/// list for the iPad.
using OrientationsIPadOverride = OverrideOfKind<OrientationsIPadKind>;

/// An edit of the target app's Info.plist, as part of a tweak.
using Override = std::variant<DisplayNameOverride, BundleNameOverride, BundleIDOverride,
                              VersionOverride, BuildOverride, MinimumOSVersionOverride,
                              IPadSupportOverride, OrientationsOverride, OrientationsIPadOverride>;

/// The kind's title in the user's language.
TAVLEN_API std::string localizedName(const Override& override_);

/// Called for each override of a tweak when its installation record is made. A no-op: overrides
/// change only the Info.plist.
TAVLEN_API void applyTo(TweakInfo& tweakInfo, const Override& override_);

}  // namespace tavlen
