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

constexpr std::size_t kMostBoxed = 1000000;  ///< elements of arrays, together

/// How much may still be boxed: the arrays of a script may hold themselves, or one another.
struct Limits {
  unsigned depth = 100;
  std::size_t elements = kMostBoxed;
};

id boxedAt(Engine& engine, JSValueRef value, Limits& limits);

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
id boxedElement(Engine& engine, JSValueRef value, Limits& limits) {
  static const SEL kNull = selectorNamed("null");
  id object = boxedAt(engine, value, limits);
  return object != nullptr ? object : message(foundationClass("NSNull"), kNull);
}

/// The length of an array, whose elements count from now on.
std::size_t takeLength(JSContextRef context, JSObjectRef array, Limits& limits) {
  const double length = JSValueToNumber(context, propertyOf(context, array, "length"), nullptr);
  if (!(length >= 0 && length <= static_cast<double>(limits.elements))) {
    throw ScriptError("an array has more than " + std::to_string(kMostBoxed) + " elements");
  }
  const auto count = static_cast<std::size_t>(length);
  limits.elements -= count;
  return count;
}

JSValueRef elementOf(JSContextRef context, JSObjectRef array, std::size_t index) {
  JSValueRef exception = nullptr;
  const JSValueRef value =
      JSObjectGetPropertyAtIndex(context, array, static_cast<unsigned>(index), &exception);
  if (exception != nullptr) throw ScriptError("an element of the array cannot be read");
  return value;
}

id boxedArray(Engine& engine, JSObjectRef array, Limits& limits) {
  if (limits.depth == 0) throw ScriptError("an array is nested too deeply to be boxed");
  const std::size_t count = takeLength(engine.context(), array, limits);
  --limits.depth;
  std::vector<id> objects;
  for (std::size_t i = 0; i < count; ++i)
    objects.push_back(boxedElement(engine, elementOf(engine.context(), array, i), limits));
  ++limits.depth;
  static const SEL kArray = selectorNamed("arrayWithObjects:count:");
  return message(foundationClass("NSArray"), kArray, objects.data(),
                 static_cast<unsigned long>(count));
}

id boxedAt(Engine& engine, JSValueRef value, Limits& limits) {
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
    if (native->pointer == nullptr)
      throw ScriptError("the object has ended, or its caller owns it now");
    return static_cast<id>(native->pointer);
  }
  if (JSValueIsArray(context, value))
    return boxedArray(engine, const_cast<JSObjectRef>(value), limits);
  throw ScriptError("expected an object, got " + shownValue(engine, value));
}

}  // namespace

id boxed(Engine& engine, JSValueRef value) {
  const HookStack::OwnWork own;
  Limits limits;
  return boxedAt(engine, value, limits);
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
  Limits limits;
  const std::size_t count = takeLength(context, array, limits);
  std::vector<id> keys;
  std::vector<id> values;
  for (std::size_t i = 0; i < count; ++i) {
    JSObjectRef entry = requireArray(elementOf(context, array, i));
    keys.push_back(boxedElement(engine, elementOf(context, entry, 0), limits));
    values.push_back(boxedElement(engine, elementOf(context, entry, 1), limits));
  }
  static const SEL kDictionary = selectorNamed("dictionaryWithObjects:forKeys:count:");
  return message(foundationClass("NSDictionary"), kDictionary, values.data(), keys.data(),
                 static_cast<unsigned long>(count));
}

}  // namespace tavlen::loader
