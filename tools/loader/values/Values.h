#pragma once

#include <cstddef>

#include <JavaScriptCore/JavaScript.h>

#include "tools/loader/engine/IdentityTable.h"
#include "tools/loader/types/ValueType.h"

namespace tavlen::loader {

class Engine;

/// The value for a script of what lies at `memory`. Integers that a number cannot hold become
/// BigInts. `ownership` is that of an object. Keep the result on the stack.
JSValueRef readValue(Engine& engine, const ValueType& type, const void* memory,
                     Ownership ownership = Ownership::borrowed);

/// Writes `value` as `type` to `memory`. Objects and texts that are made for it are autoreleased.
/// Throws ScriptError for a value of the wrong kind or out of range.
void writeValue(Engine& engine, const ValueType& type, JSValueRef value, void* memory);

/// Fills up a small integer at `memory` to a register's size, as libffi wants it of results.
void widenResult(const ValueType& type, void* memory);

}  // namespace tavlen::loader
