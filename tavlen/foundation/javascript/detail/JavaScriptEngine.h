#pragma once

#include <JavaScriptCore/JavaScript.h>

#include "tavlen/foundation/base/SharedLibrary.h"

namespace tavlen {

/// The functions of the engine's C interface that the library calls.
// clang-format off
#define TAVLEN_ENGINE_FUNCTIONS(of) \
  of(JSContextGetGlobalObject) \
  of(JSEvaluateScript) \
  of(JSGlobalContextCreate) \
  of(JSGlobalContextRelease) \
  of(JSObjectCallAsFunction) \
  of(JSObjectGetProperty) \
  of(JSStringCreateWithCharacters) \
  of(JSStringGetCharactersPtr) \
  of(JSStringGetLength) \
  of(JSStringRelease) \
  of(JSValueIsObject) \
  of(JSValueIsString) \
  of(JSValueIsUndefined) \
  of(JSValueMakeString) \
  of(JSValueMakeUndefined) \
  of(JSValueProtect) \
  of(JSValueToObject) \
  of(JSValueToStringCopy) \
  of(JSValueUnprotect)
// clang-format on

struct JavaScriptEngine {
  TAVLEN_ENGINE_FUNCTIONS(TAVLEN_LIBRARY_FUNCTION)
};

/// The engine. On Linux its shared library is loaded by the first call, because that takes half the
/// time of a command that runs no script; it stays loaded. On Apple's systems it is linked. Throws
/// JavaScriptContext::EngineError if it cannot be loaded. Threads: any.
const JavaScriptEngine& engine();

}  // namespace tavlen
