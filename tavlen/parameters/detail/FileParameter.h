#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "tavlen/foundation/json/JSONEncoder.h"

namespace tavlen {

/// A parameter whose value is a file in the tweak's resources.
template <class Kind>
concept FileParameter = requires(Kind kind) {
  { Kind::objectClass } -> std::convertible_to<std::string_view>;
  { kind.filename } -> std::same_as<std::string&>;
};

/// Appends the expression that makes an object of the file. Throws EncodingError for a name that is
/// not UTF-8.
template <FileParameter Kind>
void appendFileObject(std::string& out, const Kind& parameter) {
  out.append("[[").append(Kind::objectClass).append(" alloc] initWithContentsOfFile:");
  out += "[resourcesPath stringByAppendingPathComponent:";
  appendJSONString(out, parameter.filename);
  out += "]]";
}

}  // namespace tavlen
