#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include <JavaScriptCore/JavaScript.h>

#include "tools/loader/types/CallSignature.h"

namespace tavlen::loader {

class Engine;

/// The call of the method `selector`, whose own types are `fixed`, with the `count` further
/// arguments at `values`.
///
/// Encodings do not tell the types of variadic arguments. After a format they are those of its
/// conversions; after another object, objects; otherwise a whole number is a long long, another
/// number a double, anything else an object. A null pointer is appended, which ends a list that
/// lacks its end. Throws ScriptError if the format wants more arguments.
std::shared_ptr<const CallSignature> variadicSignature(Engine& engine, const CallSignature& fixed,
                                                       std::string_view selector,
                                                       JSValueRef lastFixed,
                                                       const JSValueRef* values, std::size_t count);

}  // namespace tavlen::loader
