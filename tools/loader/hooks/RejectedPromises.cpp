#include "tools/loader/hooks/RejectedPromises.h"

#include <dlfcn.h>

#include <string>

#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/ErrorValues.h"
#include "tools/loader/engine/HookStack.h"
#include "tools/loader/engine/Native.h"
#include "tools/loader/hooks/Hook.h"

namespace tavlen::loader {

namespace {

/// The engine calls it with the promise and the error.
struct RejectedPromise : NativeFunction {
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override {
    const HookRecord* record = HookStack::current().top();
    const bool isOwn = record != nullptr && &record->hook.engine() == &engine;
    const std::string method = isOwn ? record->hook.text() : std::string();
    const JSValueRef error = call[1];
    const std::string kRejected = "a promise was rejected: ";
    const auto failure = failureOf([&] {
      engine.reportMistake(method, kRejected + messageOf(engine, error), error,
                           isOwn ? record->hook.function() : nullptr);
    });
    if (failure)
      engine.reportMistake(method, kRejected + "an error that cannot be shown", nullptr, nullptr);
    return JSValueMakeUndefined(call.context);
  }
};

}  // namespace

void reportRejectedPromises(Engine& engine) {
  // The engine exports it, here and on devices, but no public header declares it.
  using Set = void (*)(JSGlobalContextRef context, JSObjectRef function, JSValueRef* exception);
  const auto set = reinterpret_cast<Set>(
      ::dlsym(RTLD_DEFAULT, "JSGlobalContextSetUnhandledRejectionCallback"));
  if (set == nullptr) return;
  JSValueRef ignored = nullptr;
  set(engine.context(),
      JSObjectMake(engine.context(), nativeFunctionClass(), new RejectedPromise(engine)), &ignored);
}

}  // namespace tavlen::loader
