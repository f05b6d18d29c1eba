#include "tools/loader/calls/FunctionCall.h"

#include <dlfcn.h>

#include "tools/loader/base/EngineString.h"
#include "tools/loader/calls/ArgumentFrame.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {

namespace {

std::string textArgument(const Call& call, std::size_t index) {
  if (!JSValueIsString(call.context, call[index]))
    throw ScriptError("loadFunc: expected the name of a function and its types");
  return EngineString(call.context, call[index]).utf8();
}

}  // namespace

JSValueRef FunctionCall::call(const Call& call) {
  const std::size_t count = signature->arguments().size();
  if (call.count != count) {
    throw ScriptError("the function takes " + std::to_string(count) + " arguments, not " +
                      std::to_string(call.count));
  }
  ArgumentFrame frame(*signature);
  for (std::size_t i = 0; i < count; ++i) frame.set(engine, i, call[i], i + 1);
  CallMemory result(signature->resultSize());
  frame.call(code, result.data());
  return readValue(engine, signature->result(), result.data());
}

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
        new FunctionCall(engine, reinterpret_cast<void (*)()>(code), std::move(signature)));
  } catch (const UnsupportedType& error) {
    throw ScriptError("loadFunc: " + name + ": " + error.what());
  }
  JSValueProtect(call.context, function);
  return function;
}

}  // namespace tavlen::loader
