#include "tools/loader/engine/ShownValue.h"

#include <objc/runtime.h>

#include <array>
#include <cstdio>

#include "tavlen/foundation/text/Unicode.h"
#include "tools/loader/base/EngineString.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/HookStack.h"
#include "tools/loader/engine/ProgramCode.h"

namespace tavlen::loader {

namespace {

std::string addressText(const void* address) {
  std::array<char, 32> text{};
  (void)std::snprintf(text.data(), text.size(), "%p", address);
  return text.data();
}

/// At most so long that a line can be read.
std::string shortened(std::u16string_view text) {
  constexpr std::size_t kLongest = 60;
  return utf8FromUTF16(text.substr(0, kLongest)) + (text.size() > kLongest ? "..." : "");
}

std::string quoted(std::u16string_view text) { return '"' + shortened(text) + '"'; }

double numberOf(id number) {
  static const SEL kDouble = ObjCRuntime::selectorNamed("doubleValue");
  return message<double>(number, kDouble);
}

std::string numberText(Engine& engine, double number) {
  return EngineString(engine.context(), JSValueMakeNumber(engine.context(), number)).utf8();
}

std::string shownObject(Engine& engine, id object) {
  const HookStack::OwnWork own;
  if (ObjCRuntime::isKindOf(object, "NSString")) return '@' + quoted(textOf(object));
  if (ObjCRuntime::isKindOf(object, "NSNumber")) return '@' + numberText(engine, numberOf(object));
  return '<' + className(object) + ' ' + addressText(object) + '>';
}

std::string shownNative(Engine& engine, const Native& native) {
  switch (native.kind) {
    case Native::Kind::object:
      return native.pointer != nullptr ? shownObject(engine, static_cast<id>(native.pointer))
                                       : "a deallocated object";
    case Native::Kind::class_:
      return class_getName(static_cast<Class>(native.pointer));
    case Native::Kind::selector:
      return std::string("@selector(") + sel_getName(static_cast<SEL>(native.pointer)) + ')';
    case Native::Kind::pointer:
      return addressText(native.pointer);
    case Native::Kind::function:
      return "a function";
    case Native::Kind::exception:
      return "a C++ exception";
  }
  return {};
}

/// As JSON where there is such a form.
std::string shownPlainObject(Engine& engine, JSObjectRef object) {
  if (JSObjectIsFunction(engine.context(), object)) return "a function";
  if (JSStringRef json = JSValueCreateJSONString(engine.context(), object, 0, nullptr))
    return shortened(EngineString(json).units());
  return JSValueIsArray(engine.context(), object) ? "an array" : "a JavaScript object";
}

}  // namespace

std::string shownValue(Engine& engine, JSValueRef value) {
  JSContextRef context = engine.context();
  if (const Native* native = Native::of(context, value)) return shownNative(engine, *native);
  switch (JSValueGetType(context, value)) {
    case kJSTypeString:
      return quoted(EngineString(context, value).units());
    case kJSTypeSymbol:
      return "a symbol";
    case kJSTypeObject:
      return shownPlainObject(engine, const_cast<JSObjectRef>(value));
    default:
      return EngineString(context, value).utf8();
  }
}

JSValueRef primitiveOf(Native& native, bool wantsNumber) {
  Engine& engine = native.engine;
  JSContextRef context = engine.context();
  if (native.kind == Native::Kind::class_)
    return stringValue(context, class_getName(static_cast<Class>(native.pointer)));
  if (native.kind == Native::Kind::selector)
    return stringValue(context, sel_getName(static_cast<SEL>(native.pointer)));
  if (native.kind != Native::Kind::object || native.pointer == nullptr)
    return stringValue(context, shownNative(engine, native));
  id object = static_cast<id>(native.pointer);
  if (ObjCRuntime::isKindOf(object, "NSString")) {
    const HookStack::OwnWork own;
    return stringValue(context, textOf(object));
  }
  if (wantsNumber && ObjCRuntime::isKindOf(object, "NSNumber")) {
    const HookStack::OwnWork own;
    return JSValueMakeNumber(context, numberOf(object));
  }
  if (!ObjCRuntime::respondsTo(object, "description"))
    return stringValue(context, shownNative(engine, native));
  static const SEL kDescription = ObjCRuntime::selectorNamed("description");
  id description = nullptr;
  runProgram([&] { description = message(object, kDescription); });
  return stringValue(context, textOf(description));
}

}  // namespace tavlen::loader
