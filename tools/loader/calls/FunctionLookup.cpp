#include "tools/loader/calls/FunctionLookup.h"

#include <dlfcn.h>

#include "tools/loader/base/EngineString.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/values/FunctionValue.h"

namespace tavlen::loader {

namespace {

std::string textArgument(const Call& call, std::size_t index) {
  if (!JSValueIsString(call.context, call[index]))
    throw ScriptError("loadFunc: expected the name of a function and its types");
  return EngineString(call.context, call[index]).utf8();
}

}  // namespace

JSValueRef FunctionLookup::call(const Call& call) {
  const std::string name = textArgument(call, 0);
  const std::string types = textArgument(call, 1);
  const std::lock_guard lock(lock_);
  JSObjectRef& function = found_[name + ' ' + types];
  if (function != nullptr) return function;
  void* code = ::dlsym(RTLD_DEFAULT, name.c_str());
  if (code == nullptr) throw ScriptError("loadFunc: the program has no function " + name);
  try {
    auto signature = CallSignature::from(types);
    function = JSObjectMake(
        call.context, nativeFunctionClass(),
        new FunctionValue(engine, reinterpret_cast<void (*)()>(code), std::move(signature)));
  } catch (const UnsupportedType& error) {
    throw ScriptError("loadFunc: " + name + ": " + error.what());
  }
  JSValueProtect(call.context, function);
  return function;
}

}  // namespace tavlen::loader
