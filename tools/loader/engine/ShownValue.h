#pragma once

#include <string>

#include <JavaScriptCore/JavaScript.h>

#include "tools/loader/engine/Native.h"
#include "tools/loader/types/ValueType.h"

namespace tavlen::loader {

class Engine;

/// A value of a script for messages: strings in quotes and shortened, objects by their class,
/// those of the script as JSON. Runs no code of the program, and of the script only what its own
/// objects do when they are read.
std::string shownValue(Engine& engine, JSValueRef value);

/// The value that the engine's conversion of a wrapper gives: the number of an NSNumber if a number
/// is wanted, otherwise a string: an NSString's text, a class's or a selector's name, the
/// description of another object.
JSValueRef primitiveOf(Native& native, bool wantsNumber);

}  // namespace tavlen::loader
