#include "tools/loader/values/Boxing.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/loader/base/EngineString.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/HookStack.h"
#include "tools/loader/engine/Native.h"
#include "tools/loader/engine/ShownValue.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {

namespace {

using ObjCRuntime::classNamed;
using ObjCRuntime::selectorNamed;

constexpr unsigned kDeepest = 100;

id boxedAt(Engine& engine, JSValueRef value, unsigned depth);

Class foundationClass(const char* name) {
  Class cls = classNamed(name);
  if (cls == nullptr) throw ScriptError(std::string("the program has no class ") + name);
  return cls;
}

id boxedNumber(double number) {
  constexpr double kLargest = 9007199254740992.0;  // 2^53
  static const SEL kWhole = selectorNamed("numberWithLongLong:");
  static const SEL kReal = selectorNamed("numberWithDouble:");
  Class cls = foundationClass("NSNumber");
  const bool isWhole = std::trunc(number) == number && std::abs(number) <= kLargest;
  if (isWhole && !(number == 0 && std::signbit(number)))
    return message(cls, kWhole, static_cast<long long>(number));
  return message(cls, kReal, number);
}

id boxedBigInt(Engine& engine, JSValueRef value) {
  static const auto kTypes = std::array{ValueType::from("q"), ValueType::from("Q")};
  static const SEL kSigned = selectorNamed("numberWithLongLong:");
  static const SEL kUnsigned = selectorNamed("numberWithUnsignedLongLong:");
  const bool isNegative =
      JSValueCompareDouble(engine.context(), value, 0, nullptr) == kJSRelationConditionLessThan;
  std::uint64_t bits = 0;
  writeValue(engine, *kTypes.at(isNegative ? 0 : 1), value, &bits);
  Class cls = foundationClass("NSNumber");
  if (isNegative) return message(cls, kSigned, static_cast<long long>(bits));
  return message(cls, kUnsigned, static_cast<unsigned long long>(bits));
}

/// Objects for collections, which hold no nil.
id boxedElement(Engine& engine, JSValueRef value, unsigned depth) {
  static const SEL kNull = selectorNamed("null");
  id object = boxedAt(engine, value, depth);
  return object != nullptr ? object : message(foundationClass("NSNull"), kNull);
}

std::size_t lengthOf(JSContextRef context, JSObjectRef array) {
  return static_cast<std::size_t>(
      JSValueToNumber(context, propertyOf(context, array, "length"), nullptr));
}

JSValueRef elementOf(JSContextRef context, JSObjectRef array, std::size_t index) {
  JSValueRef exception = nullptr;
  const JSValueRef value =
      JSObjectGetPropertyAtIndex(context, array, static_cast<unsigned>(index), &exception);
  if (exception != nullptr) throw ScriptError("an element of the array cannot be read");
  return value;
}

id boxedArray(Engine& engine, JSObjectRef array, unsigned depth) {
  if (depth == 0) throw ScriptError("an array is nested too deeply to be boxed");
  const std::size_t count = lengthOf(engine.context(), array);
  std::vector<id> objects;
  for (std::size_t i = 0; i < count; ++i)
    objects.push_back(boxedElement(engine, elementOf(engine.context(), array, i), depth - 1));
  static const SEL kArray = selectorNamed("arrayWithObjects:count:");
  return message(foundationClass("NSArray"), kArray, objects.data(),
                 static_cast<unsigned long>(count));
}

id boxedAt(Engine& engine, JSValueRef value, unsigned depth) {
  JSContextRef context = engine.context();
  switch (JSValueGetType(context, value)) {
    case kJSTypeUndefined:
    case kJSTypeNull:
      return nullptr;
    case kJSTypeString:
      if (id string = newString(EngineString(context, value).units())) return autorelease(string);
      throw ScriptError("the program has no class NSString");
    case kJSTypeBoolean: {
      static const SEL kBool = selectorNamed("numberWithBool:");
      return message(foundationClass("NSNumber"), kBool,
                     static_cast<BOOL>(JSValueToBoolean(context, value)));
    }
    case kJSTypeNumber:
      return boxedNumber(JSValueToNumber(context, value, nullptr));
    case kJSTypeBigInt:
      return boxedBigInt(engine, value);
    default:
      break;
  }
  if (const Native* native = Native::of(context, value)) {
    if (native->kind != Native::Kind::object && native->kind != Native::Kind::class_)
      throw ScriptError("expected an object, got " + shownValue(engine, value));
    if (native->pointer == nullptr) throw ScriptError("the object has been deallocated");
    return static_cast<id>(native->pointer);
  }
  if (JSValueIsArray(context, value))
    return boxedArray(engine, const_cast<JSObjectRef>(value), depth);
  throw ScriptError("expected an object, got " + shownValue(engine, value));
}

}  // namespace

id boxed(Engine& engine, JSValueRef value) {
  const HookStack::OwnWork own;
  return boxedAt(engine, value, kDeepest);
}

id boxedDictionary(Engine& engine, JSValueRef entries) {
  const HookStack::OwnWork own;
  JSContextRef context = engine.context();
  const auto requireArray = [&](JSValueRef value) {
    if (!JSValueIsArray(context, value))
      throw ScriptError("expected an array of pairs, got " + shownValue(engine, value));
    return const_cast<JSObjectRef>(value);
  };
  JSObjectRef array = requireArray(entries);
  const std::size_t count = lengthOf(context, array);
  std::vector<id> keys;
  std::vector<id> values;
  for (std::size_t i = 0; i < count; ++i) {
    JSObjectRef entry = requireArray(elementOf(context, array, i));
    keys.push_back(boxedElement(engine, elementOf(context, entry, 0), kDeepest));
    values.push_back(boxedElement(engine, elementOf(context, entry, 1), kDeepest));
  }
  static const SEL kDictionary = selectorNamed("dictionaryWithObjects:forKeys:count:");
  return message(foundationClass("NSDictionary"), kDictionary, values.data(), keys.data(),
                 static_cast<unsigned long>(count));
}

}  // namespace tavlen::loader
