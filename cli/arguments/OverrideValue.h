#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavlen/bundles/OverrideContainer.h"

namespace tavlen::cli {

inline constexpr const char* kOverrideValueHelp =
    "The value: a text; for MinimumOSVersion a version, or none; for IPadSupport true or false; "
    "for "
    "orientations a list such as Portrait,LandscapeLeft, or none";

/// The identifiers of all kinds, in the order in which they are shown.
std::vector<std::string> overrideKinds();
/// `identifier` must be one of overrideKinds().
const OverrideKindInfo& overrideKind(std::string_view identifier);

std::string_view identifierOf(const Override& override_);

/// An override of the kind `identifier`, one of overrideKinds(), with the value that
/// kOverrideValueHelp describes. Throws UsageError.
Override parseOverride(std::string_view identifier, const std::string& text);
/// The text that parseOverride() reads back.
std::string overrideText(const Override& override_);

}  // namespace tavlen::cli
