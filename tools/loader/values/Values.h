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

/// Writes `value` as the result of a function of a script to `result`, in the form in which libffi
/// wants results. An object or a block lives as long as autoreleased ones, or the caller owns the
/// object if `givesReference`. Throws ScriptError, also for undefined where there is a result.
void writeResult(Engine& engine, const ValueType& type, JSValueRef value, void* result,
                 bool givesReference);

}  // namespace tavlen::loader
