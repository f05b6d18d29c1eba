#include "tools/loader/engine/RejectedPromises.h"

#include <dlfcn.h>

#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/ErrorValues.h"
#include "tools/loader/engine/Native.h"

namespace tavlen::loader {

namespace {

/// The engine calls it with the promise and the error.
struct RejectedPromise : NativeFunction {
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override {
    // The hook that runs now need not be the one whose script made the promise.
    reportThrown(engine, {}, "a promise was rejected: ", call[1], nullptr);
    return JSValueMakeUndefined(call.context);
  }
};

}  // namespace

void reportRejectedPromises(Engine& engine) {
  // The engine exports it, here and on devices, but no public header declares it.
  using Set = void (*)(JSGlobalContextRef context, JSObjectRef function, JSValueRef * exception);
  const auto set =
      reinterpret_cast<Set>(::dlsym(RTLD_DEFAULT, "JSGlobalContextSetUnhandledRejectionCallback"));
  if (set == nullptr) return;
  JSValueRef ignored = nullptr;
  set(engine.context(),
      JSObjectMake(engine.context(), nativeFunctionClass(), new RejectedPromise(engine)), &ignored);
}

}  // namespace tavlen::loader
