#pragma once

#include <optional>
#include <string_view>

#include "tavlen/bundles/OverrideContainer.h"
#include "tavlen/foundation/toml/TOMLNode.h"

/// The overrides of a tweak as TOML: a text, a version, a Boolean, or an array of the short names
/// of orientations.
namespace tavlen {

/// Reads an override of the kind at `index` of OverrideContainer::supportedTypes(). Throws
/// TOMLError.
OverrideContainer overrideFromNode(std::size_t index, const TOMLNode& node);

/// The override's value; nothing if it has none.
std::optional<TOMLNode> nodeFromOverride(const OverrideContainer& override_);

}  // namespace tavlen
