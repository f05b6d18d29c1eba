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

/// The identifiers of all kinds, in display order.
std::vector<std::string> overrideKinds();
/// The kind with that identifier, which must be one of overrideKinds().
const OverrideKindInfo& overrideKind(std::string_view identifier);

/// The identifier of the override's kind.
std::string_view identifierOf(const Override& override_);

/// Reads a value in the form of kOverrideValueHelp, for the kind `identifier`, which must be one of
/// overrideKinds(). Throws UsageError.
Override parseOverride(std::string_view identifier, const std::string& text);
/// The value in the form that parseOverride() reads.
std::string overrideText(const Override& override_);

}  // namespace tavlen::cli
