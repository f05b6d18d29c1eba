#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "tools/loader/base/BlockObject.h"
#include "tools/loader/base/EngineString.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/HookStack.h"
#include "tools/loader/engine/Native.h"
#include "tools/loader/engine/ShownValue.h"
#include "tools/loader/values/BlockType.h"
#include "tools/loader/values/BlockValue.h"
#include "tools/loader/values/Boxing.h"
#include "tools/loader/values/ScriptBlock.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {

namespace {

using Kind = ValueType::Kind;

[[noreturn]] void refuse(Engine& engine, const char* expected, JSValueRef value) {
  throw ScriptError(std::string("expected ") + expected + ", got " + shownValue(engine, value));
}

template <class T>
void put(void* memory, T value) {
  std::memcpy(memory, &value, sizeof(T));  // NOLINT(bugprone-sizeof-expression): of a pointer
}

/// The bits of an integer in two's complement, with its sign.
struct Integer {
  std::uint64_t bits;
  bool isNegative;
};

/// A whole number; nothing for any other value.
std::optional<Integer> integerFrom(Engine& engine, JSValueRef value) {
  JSContextRef context = engine.context();
  if (JSValueIsNumber(context, value)) {
    const double number = JSValueToNumber(context, value, nullptr);
    constexpr double kEnd = 18446744073709551616.0;  // 2^64
    if (std::trunc(number) != number || number >= kEnd || number < -kEnd / 2) return std::nullopt;
    if (number < 0)
      return Integer{static_cast<std::uint64_t>(static_cast<std::int64_t>(number)), true};
    return Integer{static_cast<std::uint64_t>(number), false};
  }
  if (JSValueIsBoolean(context, value))
    return Integer{std::uint64_t{JSValueToBoolean(context, value)}, false};
  if (!JSValueIsBigInt(context, value)) return std::nullopt;
  // Comparing tells the sign, and whether the value has more bits than the conversion keeps.
  const std::uint64_t bits = JSValueToUInt64(context, value, nullptr);
  const bool isNegative =
      JSValueCompareDouble(context, value, 0, nullptr) == kJSRelationConditionLessThan;
  const JSRelationCondition same =
      isNegative ? JSValueCompareInt64(context, value, static_cast<std::int64_t>(bits), nullptr)
                 : JSValueCompareUInt64(context, value, bits, nullptr);
  if (same != kJSRelationConditionEqual) return std::nullopt;
  return Integer{bits, isNegative};
}

void writeInteger(Engine& engine, const ValueType& type, JSValueRef value, void* memory) {
  const auto integer = integerFrom(engine, value);
  const char* expected = type.isSigned() ? "a whole number" : "a whole number from 0";
  if (!integer) refuse(engine, expected, value);
  const auto unused = static_cast<unsigned>(64 - 8 * type.size());
  const std::uint64_t bits = integer->bits;
  // A byte is BOOL in some encodings, and signed in others: both ranges fit it.
  const bool takesBoth = type.size() == 1;
  const bool fitsUnsigned =
      !integer->isNegative && bits <= std::numeric_limits<std::uint64_t>::max() >> unused;
  const auto signedBits = static_cast<std::int64_t>(bits);
  const bool fitsSigned = integer->isNegative == (signedBits < 0) &&
                          signedBits >= std::numeric_limits<std::int64_t>::min() >> unused &&
                          signedBits <= std::numeric_limits<std::int64_t>::max() >> unused;
  if (takesBoth ? !fitsSigned && !fitsUnsigned : type.isSigned() ? !fitsSigned : !fitsUnsigned) {
    refuse(engine,
           (std::string(expected) + " of " + std::to_string(8 * type.size()) + " bits").c_str(),
           value);
  }
  std::memcpy(memory, &bits, type.size());  // the low bytes come first on every device
}

void writeReal(Engine& engine, const ValueType& type, JSValueRef value, void* memory) {
  JSContextRef context = engine.context();
  if (!JSValueIsNumber(context, value)) refuse(engine, "a number", value);
  const double number = JSValueToNumber(context, value, nullptr);
  if (type.kind() == Kind::longReal)
    put(memory, static_cast<long double>(number));
  else if (type.size() == sizeof(float))
    put(memory, static_cast<float>(number));
  else
    put(memory, number);
}

/// Whether `value` stands for nil or a null pointer.
bool isNothing(Engine& engine, JSValueRef value) {
  return JSValueIsNull(engine.context(), value) || JSValueIsUndefined(engine.context(), value);
}

void writeNative(Engine& engine, Native::Kind kind, const char* expected, JSValueRef value,
                 void* memory) {
  void* pointer = nullptr;
  if (!isNothing(engine, value)) {
    const Native* native = Native::of(engine.context(), value);
    if (native == nullptr || native->kind != kind) refuse(engine, expected, value);
    pointer = native->pointer;
  }
  put(memory, pointer);
}

/// A C string lives in an autoreleased NSMutableData: as long as other temporary results.
void writeText(Engine& engine, JSValueRef value, void* memory) {
  JSContextRef context = engine.context();
  if (!JSValueIsString(context, value))
    return writeNative(engine, Native::Kind::pointer, "a string", value, memory);
  const std::string text = EngineString(context, value).utf8();
  static const SEL kData = ObjCRuntime::selectorNamed("dataWithBytes:length:");
  static const SEL kBytes = ObjCRuntime::selectorNamed("mutableBytes");
  Class cls = ObjCRuntime::classNamed("NSMutableData");
  if (cls == nullptr) throw ScriptError("no Foundation is loaded to keep a C string");
  id data = message(cls, kData, static_cast<const void*>(text.c_str()),
                    static_cast<unsigned long>(text.size() + 1));
  put(memory, message<void*>(data, kBytes));
}

/// A block made of a function lives as long as a C string does.
void writeBlock(Engine& engine, const ValueType& type, JSValueRef value, void* memory) {
  JSContextRef context = engine.context();
  const bool isFunction = JSValueIsObject(context, value) &&
                          JSObjectIsFunction(context, const_cast<JSObjectRef>(value)) &&
                          Native::of(context, value) == nullptr;
  if (!isFunction) return writeNative(engine, kBlockKind, "a block", value, memory);
  if (type.blockTypes().empty())
    throw ScriptError(
        "a function cannot become a block here: the encoding does not tell the block's types; use "
        "objc_block");
  id object =
      newScriptBlock(engine, BlockType::of(type.blockTypes()), const_cast<JSObjectRef>(value));
  put(memory, blockIn(autorelease(object)));
}

/// Whether undefined would pass for a value, as nil does. A member that lacks is a mistake all the
/// same.
bool takesUndefined(const ValueType& type) {
  return type.kind() == Kind::object || type.kind() == Kind::class_ ||
         type.kind() == Kind::selector || type.kind() == Kind::text ||
         type.kind() == Kind::pointer || type.kind() == Kind::block;
}

void writeMember(Engine& engine, const ValueType::Member& member, JSValueRef value, void* memory) {
  if (value == nullptr ||
      (takesUndefined(*member.type) && JSValueIsUndefined(engine.context(), value)))
    throw ScriptError("it is missing");
  writeValue(engine, *member.type, value, static_cast<std::byte*>(memory) + member.offset);
}

/// Structures are objects with their members' names, or arrays in the members' order.
void writeAggregate(Engine& engine, const ValueType& type, JSValueRef value, void* memory) {
  JSContextRef context = engine.context();
  const bool isArray = JSValueIsArray(context, value);
  if (!isArray && (type.kind() == Kind::array || !JSValueIsObject(context, value)))
    refuse(engine, type.kind() == Kind::array ? "an array" : "a structure", value);
  auto* object = const_cast<JSObjectRef>(value);
  unsigned index = 0;
  for (const ValueType::Member& member : type.members()) {
    JSValueRef exception = nullptr;
    const JSValueRef part =
        isArray ? JSObjectGetPropertyAtIndex(context, object, index, &exception)
                : JSObjectGetProperty(context, object, member.key->get(), &exception);
    try {
      writeMember(engine, member, exception == nullptr ? part : nullptr, memory);
    } catch (const ScriptError& error) {
      throw ScriptError((isArray ? '[' + std::to_string(index) + ']' : member.name) + ": " +
                        error.what());
    }
    ++index;
  }
}

}  // namespace

void writeValue(Engine& engine, const ValueType& type, JSValueRef value, void* memory) {
  switch (type.kind()) {
    case Kind::nothing:
      return;
    case Kind::boolean:
      if (const auto integer = integerFrom(engine, value); integer && integer->bits <= 1)
        return put(memory, static_cast<std::uint8_t>(integer->bits));
      refuse(engine, "true or false", value);
    case Kind::integer:
      return writeInteger(engine, type, value, memory);
    case Kind::real:
    case Kind::longReal:
      return writeReal(engine, type, value, memory);
    case Kind::object:
      return put(memory, boxed(engine, value));
    case Kind::class_:
      return writeNative(engine, Native::Kind::class_, "a class", value, memory);
    case Kind::selector:
      return writeNative(engine, Native::Kind::selector, "a selector", value, memory);
    case Kind::text:
      return writeText(engine, value, memory);
    case Kind::block:
      return writeBlock(engine, type, value, memory);
    case Kind::pointer:
      // A pointer to characters takes a text as one to constant characters does.
      if (JSValueIsString(engine.context(), value)) return writeText(engine, value, memory);
      return writeNative(engine, Native::Kind::pointer, "a pointer", value, memory);
    case Kind::structure:
    case Kind::array:
      return writeAggregate(engine, type, value, memory);
  }
}

void widenResult(const ValueType& type, void* memory) {
  if (type.kind() != Kind::boolean && type.kind() != Kind::integer) return;
  if (type.size() >= sizeof(ffi_arg)) return;
  std::uint64_t bits = 0;
  std::memcpy(&bits, memory, type.size());
  const auto unused = static_cast<unsigned>(64 - 8 * type.size());
  bits <<= unused;
  const std::uint64_t wide =
      type.isSigned() ? static_cast<std::uint64_t>(static_cast<std::int64_t>(bits) >> unused)
                      : bits >> unused;
  put(memory, wide);
}

void writeResult(Engine& engine, const ValueType& type, JSValueRef value, void* result,
                 bool givesReference) {
  if (type.kind() == Kind::nothing) return;
  const HookStack::OwnWork own;
  if (JSValueIsUndefined(engine.context(), value)) throw ScriptError("it returned undefined");
  writeValue(engine, type, value, result);
  widenResult(type, result);
  const Native* native = Native::of(engine.context(), value);
  if (type.kind() == Kind::object && givesReference) {
    retain(*static_cast<id*>(result));
  } else if (native != nullptr) {
    // The script's own reference may end before the caller's.
    if (id object = native->keptObject()) autorelease(retain(object));
  }
}

}  // namespace tavlen::loader
