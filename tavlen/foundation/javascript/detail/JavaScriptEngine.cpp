#include "tavlen/foundation/javascript/detail/JavaScriptEngine.h"

#include <stdexcept>

#include "tavlen/foundation/javascript/JavaScriptContext.h"

namespace tavlen {

namespace {

JavaScriptEngine loadEngine() {
  try {
    const SharedLibrary library("libjavascriptcoregtk-4.1.so.0");
    JavaScriptEngine functions = {};
    TAVLEN_ENGINE_FUNCTIONS(TAVLEN_FIND_FUNCTION)
    return functions;
  } catch (const std::runtime_error& error) {
    throw JavaScriptContext::EngineError(error.what());
  }
}

}  // namespace

const JavaScriptEngine& engine() {
  static const JavaScriptEngine kEngine = loadEngine();
  return kEngine;
}

}  // namespace tavlen
