#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The types in a method's encoding, with qualifiers and without offsets. Views into the encoding.
struct TAVLEN_API MethodTypes {
  /// The type of the result.
  std::string_view result;
  /// The types of the arguments, receiver and selector first.
  std::vector<std::string_view> arguments;
};

/// Splits the type encoding of a method ("v24@0:8@16"). Returns nothing for malformed text: an
/// unknown letter, an unbalanced bracket, an empty text. Work and memory are linear in its length.
TAVLEN_API std::optional<MethodTypes> splitMethodTypes(std::string_view encoding);

/// The offset at which `encoding` fails to begin with a type: that of a wrong character, or its
/// length if it ends too early, as with an open bracket or quote. Returns nothing if it begins with
/// one. The contents of aggregates are not validated.
TAVLEN_API std::optional<std::size_t> faultInType(std::string_view encoding);

}  // namespace tavlen
