#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "tavlen/foundation/json/JSONEncoder.h"

namespace tavlen {

/// A parameter that names a run-time entity.
template <class Kind>
concept RuntimeParameter = requires(Kind kind) {
  /// The Foundation function that looks the entity up.
  { Kind::fetchFunction } -> std::convertible_to<std::string_view>;
  /// The type encoding of that function's result.
  { Kind::retEncoding } -> std::convertible_to<std::string_view>;
  { kind.name } -> std::same_as<std::string&>;
};

/// Appends the call that looks the entity up. Throws EncodingError for a name that is not UTF-8.
template <RuntimeParameter Kind>
void appendRuntimeLookup(std::string& out, const Kind& parameter) {
  // The loaded function's encoding: its result, then its one argument, an object.
  out.append("loadFunc('")
      .append(Kind::fetchFunction)
      .append("', '")
      .append(Kind::retEncoding)
      .append("@')(");
  appendJSONString(out, parameter.name);
  out += ')';
}

}  // namespace tavlen
