#include "tools/loader/calls/MethodCall.h"

#include <algorithm>
#include <string>

#include "tools/loader/base/EngineString.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/calls/VariadicArguments.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/ProgramCode.h"
#include "tools/loader/engine/ShownValue.h"
#include "tools/loader/values/ArgumentFrame.h"
#include "tools/loader/values/Boxing.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {

namespace {

constexpr std::size_t kHidden = 2;  // of a method: receiver and selector; of the call: the same

id receiverOf(Engine& engine, const std::string& selector, JSValueRef value) {
  if (JSValueIsUndefined(engine.context(), value))
    throw ScriptError("the message " + selector + " has the receiver undefined");
  return boxed(engine, value);
}

/// The signature for this many arguments. Throws ScriptError if that is fewer than the method has.
std::shared_ptr<const CallSignature> signatureFor(Engine& engine, const CallableMethod& method,
                                                  const std::string& selector, const Call& call) {
  const std::size_t fixed = method.signature->arguments().size();
  if (call.count == fixed && !formatIn(selector, *method.signature)) return method.ended;
  if (call.count < fixed || fixed == kHidden) {
    throw ScriptError(selector + " takes " + std::to_string(fixed - kHidden) + " arguments, not " +
                      std::to_string(call.count - kHidden));
  }
  return variadicSignature(engine, *method.signature, selector, call.arguments, call.count);
}

}  // namespace

JSValueRef MethodCall::call(const Call& call) {
  if (!JSValueIsString(call.context, call[1]))
    throw ScriptError("objc_send: expected a selector as a string");
  const std::string name = EngineString(call.context, call[1]).utf8();
  id receiver = receiverOf(engine, name, call[0]);
  if (receiver == nullptr) return JSValueMakeNull(call.context);
  SEL selector = ObjCRuntime::selectorNamed(name.c_str());
  const CallableMethod& method = engine.methods().find(receiver, selector);
  if (method.family.countsReferences)
    throw ScriptError(name + ": references are counted by the loader, not by scripts");
  const auto signature = signatureFor(engine, method, name, call);
  ArgumentFrame frame(*signature);
  frame.setPointer(0, receiver);
  frame.setPointer(1, selector);
  for (std::size_t i = kHidden; i < call.count; ++i) frame.set(engine, i, call[i], i - kHidden + 1);
  if (signature->arguments().size() > call.count) frame.setPointer(call.count, nullptr);
  if (method.family.takesReceiver) retain(receiver);
  CallMemory result(signature->resultSize());
  void (*code)() = nullptr;
  runProgram([&] { code = ObjCRuntime::implementation(receiver, selector); });  // +initialize
  frame.call(code, result.data());
  return readValue(engine, signature->result(), result.data(), method.family.ownershipOfResult());
}

}  // namespace tavlen::loader
