#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavlen/bundles/OverrideContainer.h"

namespace tavlen::cli {

/// The help text of an override's value.
inline constexpr const char* kOverrideValueHelp =
    "The value: a text; for MinimumOSVersion a version, or none; for IPadSupport true or false; "
    "for "
    "orientations a list such as Portrait,LandscapeLeft, or none";

/// The identifier of the kind with that identifier or that title, whatever the case. Throws
/// UsageError, perhaps with a suggestion.
std::string overrideKindNamed(const std::string& text);
/// All identifiers in display order, for help: "DisplayName, BundleName".
std::string overrideKinds();
/// The kind with that identifier, as returned by overrideKindNamed().
const OverrideKindInfo& overrideKind(std::string_view identifier);

/// The identifier of the override's kind.
std::string_view identifierOf(const Override& override_);

/// Reads a value in the form of kOverrideValueHelp, for the kind `identifier`, as returned by
/// overrideKindNamed(). Throws UsageError.
Override parseOverride(std::string_view identifier, const std::string& text);
/// The value in the form that parseOverride() reads.
std::string overrideText(const Override& override_);

}  // namespace tavlen::cli
