#include "tavlen/foundation/javascript/detail/JavaScriptEngine.h"

#ifndef __APPLE__
#include <dlfcn.h>

#include <string>

#include "tavlen/foundation/javascript/JavaScriptContext.h"
#endif

namespace tavlen {

namespace {

#ifdef __APPLE__

JavaScriptEngine loadEngine() {
#define TAVLEN_ENGINE_FUNCTION(name) &::name,
  return {TAVLEN_ENGINE_FUNCTIONS(TAVLEN_ENGINE_FUNCTION)};
#undef TAVLEN_ENGINE_FUNCTION
}

#else

constexpr const char* kEngineLibrary = "libjavascriptcoregtk-4.1.so.0";

[[noreturn]] void failToLoad() {
  const char* reason = ::dlerror();  // NOLINT(concurrency-mt-unsafe)
  throw JavaScriptContext::EngineError(reason != nullptr ? reason : kEngineLibrary);
}

template <class Function>
void find(void* library, const char* name, Function& function) {
  void* symbol = ::dlsym(library, name);
  if (symbol == nullptr) failToLoad();
  function = reinterpret_cast<Function>(symbol);
}

JavaScriptEngine loadEngine() {
  void* library = ::dlopen(kEngineLibrary, RTLD_LAZY | RTLD_NODELETE);
  if (library == nullptr) failToLoad();
  JavaScriptEngine engine = {};
#define TAVLEN_ENGINE_FUNCTION(name) find(library, #name, engine.name);
  TAVLEN_ENGINE_FUNCTIONS(TAVLEN_ENGINE_FUNCTION)
#undef TAVLEN_ENGINE_FUNCTION
  return engine;
}

#endif

}  // namespace

const JavaScriptEngine& engine() {
  static const JavaScriptEngine kEngine = loadEngine();
  return kEngine;
}

}  // namespace tavlen
