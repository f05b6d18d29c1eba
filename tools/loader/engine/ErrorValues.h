#pragma once

#include <optional>
#include <string>

#include <JavaScriptCore/JavaScript.h>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tools/loader/base/ExceptionGuard.h"

namespace tavlen::loader {

class Engine;

/// An error of a script with a message.
JSValueRef errorOf(Engine& engine, const std::string& message);
/// An error that carries an exception of the program in its property `exception`.
JSValueRef errorOf(Engine& engine, Raised raised);

/// The exception of the program that a script threw: an error with one in its property `exception`,
/// or an Objective-C object itself. Nothing for an error of the script's own.
std::optional<Raised> raisedBy(Engine& engine, JSValueRef thrown);

/// The beginning of the text of what a script threw, for a message: "TypeError: undefined is not an
/// object".
std::string messageOf(Engine& engine, JSValueRef thrown);

/// Reports what a script threw, with `prefix` before its text; see Engine::reportMistake().
void reportThrown(Engine& engine, const std::string& method, const std::string& prefix,
                  JSValueRef thrown, JSObjectRef function);

/// Runs `body`, work of the loader's own, and returns the text of what it threw or raised: a
/// mistake of the script, which asked for what cannot be done. Nothing if it ended well. A
/// ProgramException passes.
std::optional<std::string> failureOf(FunctionRef<void()> body);

}  // namespace tavlen::loader
