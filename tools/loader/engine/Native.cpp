#include "tools/loader/engine/Native.h"

#include <optional>

#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/ErrorValues.h"
#include "tools/loader/engine/ProgramCode.h"
#include "tools/loader/engine/ShownValue.h"

namespace tavlen::loader {

namespace {

void finalize(JSObjectRef object) { delete static_cast<Native*>(JSObjectGetPrivate(object)); }

/// The error that `make` makes; a plain one if even that fails.
JSValueRef madeError(Engine& engine, FunctionRef<JSValueRef()> make) {
  JSValueRef error = nullptr;
  if (failureOf([&] { error = make(); }))
    error = JSObjectMakeError(engine.context(), 0, nullptr, nullptr);
  return error;
}

/// Runs `body` for the engine: whatever it throws becomes an error of the script.
JSValueRef contained(Engine& engine, JSValueRef* exception, FunctionRef<JSValueRef()> body) {
  JSValueRef value = nullptr;
  try {
    const auto failure = failureOf([&] { value = body(); });
    if (!failure) return value;
    *exception = madeError(engine, [&] { return errorOf(engine, *failure); });
  } catch (const ProgramException& exit) {
    *exception = madeError(engine, [&] { return errorOf(engine, exit.raised); });
  }
  return nullptr;
}

JSValueRef call(JSContextRef context, JSObjectRef function, JSObjectRef self, std::size_t count,
                const JSValueRef* arguments, JSValueRef* exception) {
  auto& native = *static_cast<NativeFunction*>(JSObjectGetPrivate(function));
  return contained(native.engine, exception, [&] {
    return native.call({context, self, count, arguments});
  });
}

/// The engine asks for a number even where it joins texts, and takes a text then, too.
JSValueRef convert(JSContextRef /*context*/, JSObjectRef object, JSType type,
                   JSValueRef* exception) {
  auto& native = *static_cast<Native*>(JSObjectGetPrivate(object));
  return contained(native.engine, exception,
                   [&] { return primitiveOf(native, type == kJSTypeNumber); });
}

JSClassRef makeClass(const char* name, JSObjectCallAsFunctionCallback callAsFunction) {
  JSClassDefinition definition = kJSClassDefinitionEmpty;
  definition.className = name;
  definition.finalize = finalize;
  definition.callAsFunction = callAsFunction;
  definition.convertToType = convert;
  return JSClassCreate(&definition);
}

}  // namespace

NativeObject::~NativeObject() {
  if (pointer != nullptr) engine.releases().add(static_cast<id>(pointer), isOwned);
}

Native* Native::of(JSContextRef context, JSValueRef value) {
  if (!JSValueIsObject(context, value)) return nullptr;
  return static_cast<Native*>(JSObjectGetPrivate(const_cast<JSObjectRef>(value)));
}

JSClassRef nativeClass() {
  static JSClassRef shared = makeClass("ObjectiveC", nullptr);
  return shared;
}

JSClassRef nativeFunctionClass() {
  static JSClassRef shared = makeClass("NativeFunction", call);
  return shared;
}

}  // namespace tavlen::loader
