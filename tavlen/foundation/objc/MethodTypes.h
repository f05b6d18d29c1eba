#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace tavlen {

/// The types of a method's encoding: the result's, then each argument's, the receiver and the
/// selector among them. Each is a view into the encoding, qualifiers kept, the offset behind it
/// left out.
struct MethodTypes {
  std::string_view result;
  std::vector<std::string_view> arguments;
};

/// Splits the type encoding of a method ("v24@0:8@16"). Nothing for a text that is none: an unknown
/// letter, a bracket that does not close, an empty text. Work and memory are linear in the text's
/// length.
std::optional<MethodTypes> splitMethodTypes(std::string_view encoding);

}  // namespace tavlen
