#pragma once

#include <concepts>
#include <optional>
#include <string>
#include <string_view>
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

/// The part that all kinds of overrides share: one value under the key "value", absent only where
/// it is optional.
template <class Kind>
constexpr auto overrideFields() {
  if constexpr (requires(Kind kind) { kind.value.has_value(); }) {
    return std::tuple{optionalField("value", &Kind::value)};
  } else {
    return std::tuple{requiredField("value", &Kind::value)};
  }
}

/// The name under the icon.
struct DisplayNameOverride {
  static constexpr std::string_view typeName = "DisplayNameOverride";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  static constexpr LocalizedText title = {"override_title.display_name", "Display Name"};

  std::string value;

  /// Made of the app's current value.
  static DisplayNameOverride withInfo(const Info& info);
  static constexpr auto codedFields() { return overrideFields<DisplayNameOverride>(); }
  bool operator==(const DisplayNameOverride&) const = default;
};

/// The short name.
struct BundleNameOverride {
  static constexpr std::string_view typeName = "BundleNameOverride";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  static constexpr LocalizedText title = {"override_title.bundle_name", "Bundle Name"};

  std::string value;

  /// Made of the app's current value.
  static BundleNameOverride withInfo(const Info& info);
  static constexpr auto codedFields() { return overrideFields<BundleNameOverride>(); }
  bool operator==(const BundleNameOverride&) const = default;
};

/// The identifier.
struct BundleIDOverride {
  static constexpr std::string_view typeName = "BundleIDOverride";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  static constexpr LocalizedText title = {"override_title.bundle_id", "Bundle ID"};

  std::string value;

  /// Made of the app's current value.
  static BundleIDOverride withInfo(const Info& info);
  static constexpr auto codedFields() { return overrideFields<BundleIDOverride>(); }
  bool operator==(const BundleIDOverride&) const = default;
};

/// The version that users see.
struct VersionOverride {
  static constexpr std::string_view typeName = "VersionOverride";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  static constexpr LocalizedText title = {"override_title.version", "Version"};

  std::string value;

  /// Made of the app's current value.
  static VersionOverride withInfo(const Info& info);
  static constexpr auto codedFields() { return overrideFields<VersionOverride>(); }
  bool operator==(const VersionOverride&) const = default;
};

/// The build number.
struct BuildOverride {
  static constexpr std::string_view typeName = "BuildOverride";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  static constexpr LocalizedText title = {"override_title.build", "Build"};

  std::string value;

  /// Made of the app's current value.
  static BuildOverride withInfo(const Info& info);
  static constexpr auto codedFields() { return overrideFields<BuildOverride>(); }
  bool operator==(const BuildOverride&) const = default;
};

/// The oldest system that runs the app; an absent value asks for none.
struct MinimumOSVersionOverride {
  static constexpr std::string_view typeName = "MinimumOSVersionOverride";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  static constexpr LocalizedText title = {"override_title.min_os_version", "Min OS Version"};

  std::optional<SemanticVersion> value;

  /// Made of the app's current value.
  static MinimumOSVersionOverride withInfo(const Info& info);
  static constexpr auto codedFields() { return overrideFields<MinimumOSVersionOverride>(); }
  bool operator==(const MinimumOSVersionOverride&) const = default;
};

/// Whether the app runs as an iPad app.
struct IPadSupportOverride {
  static constexpr std::string_view typeName = "IPadSupportOverride";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  static constexpr LocalizedText title = {"override_title.ipad_support", "iPad Support"};

  bool value = false;

  /// Made of the app's current value.
  static IPadSupportOverride withInfo(const Info& info);
  static constexpr auto codedFields() { return overrideFields<IPadSupportOverride>(); }
  bool operator==(const IPadSupportOverride&) const = default;
};

/// The orientations on an iPhone. An empty list is a value like any other.
struct OrientationsOverride {
  static constexpr std::string_view typeName = "OrientationsOverride";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  static constexpr LocalizedText title = {"override_title.orientations", "Orientations"};

  std::vector<InterfaceOrientation> value;

  /// Made of the app's current value.
  static OrientationsOverride withInfo(const Info& info);
  static constexpr auto codedFields() { return overrideFields<OrientationsOverride>(); }
  bool operator==(const OrientationsOverride&) const = default;
};

/// The orientations on an iPad; made of the iPhone list where the app has none of its own.
struct OrientationsIPadOverride {
  static constexpr std::string_view typeName = "OrientationsIPadOverride";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Override");
  static constexpr LocalizedText title = {"override_title.orientations_ipad",
                                          "Orientations (iPad)"};

  std::vector<InterfaceOrientation> value;

  /// Made of the app's current value.
  static OrientationsIPadOverride withInfo(const Info& info);
  static constexpr auto codedFields() { return overrideFields<OrientationsIPadOverride>(); }
  bool operator==(const OrientationsIPadOverride&) const = default;
};

/// One edit of the target app's Info.plist that a tweak carries.
using Override = std::variant<DisplayNameOverride, BundleNameOverride, BundleIDOverride,
                              VersionOverride, BuildOverride, MinimumOSVersionOverride,
                              IPadSupportOverride, OrientationsOverride, OrientationsIPadOverride>;

/// What every kind offers: its name, the identifier that is stored for it, its title, its coded
/// field, and itself made of an app's current value.
template <class Kind>
concept OverrideKind = requires(const Info& info) {
  { Kind::typeName } -> std::convertible_to<std::string_view>;
  { Kind::identifier } -> std::convertible_to<std::string_view>;
  { Kind::title } -> std::convertible_to<LocalizedText>;
  { Kind::withInfo(info) } -> std::same_as<Kind>;
  Kind::codedFields();
};

/// The kind's title for the user.
std::string localizedName(const Override& override_);

/// Called on the record of an installation for each override that it carries. No kind changes the
/// record: overrides act on the Info.plist alone.
void applyTo(TweakInfo& tweakInfo, const Override& override_);

}  // namespace tavlen
