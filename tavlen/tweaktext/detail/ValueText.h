#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "tavlen/foundation/toml/TOMLNode.h"
#include "tavlen/parameters/ParameterContainer.h"
#include "tavlen/tweaks/ArgumentType.h"
#include "tavlen/tweaktext/TweakText.h"

/// The values of hooks as TOML; see TweakText.h.
namespace tavlen {

/// The integer that is written in decimal digits; nothing for other texts and beyond 2^64-1.
std::optional<std::uint64_t> unsignedFrom(std::string_view digits);

/// The parameter that a plain integer stands for. Arrays and tables pass an unknown type.
Parameter parameterFromInteger(std::int64_t value, const ArgumentType& type);

/// Reads a value for an argument of `type`. Throws TOMLError.
Parameter parameterFromNode(const TOMLNode& node, const ArgumentType& type, ValuePlaces& places);

/// Writes a value for an argument of `type`: in the short form where that reads back to the bit.
TOMLNode nodeFromParameter(const Parameter& parameter, const ArgumentType& type);

}  // namespace tavlen
