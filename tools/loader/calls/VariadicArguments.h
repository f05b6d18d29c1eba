#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

#include <JavaScriptCore/JavaScript.h>

#include "tools/loader/types/CallSignature.h"

namespace tavlen::loader {

class Engine;

/// Which argument of the method, the receiver being the first, is a format that further ones
/// follow: that of "format:", "...Format:" anywhere in the selector. Nothing for the format of a
/// date, for a property, and where an argument holds the values.
std::optional<std::size_t> formatIn(std::string_view selector, const CallSignature& fixed);

/// The call of the method `selector`, whose own types are `fixed`, with all the `count` values,
/// the receiver being the first.
///
/// Encodings do not tell the types of variadic arguments. After a format they are those of its
/// conversions; after another object, objects; otherwise a whole number is a long long, another
/// number a double, anything else an object. A null pointer is appended, which ends a list that
/// lacks its end. Throws ScriptError if the format wants more arguments.
std::shared_ptr<const CallSignature> variadicSignature(Engine& engine, const CallSignature& fixed,
                                                       std::string_view selector,
                                                       const JSValueRef* values, std::size_t count);

}  // namespace tavlen::loader
