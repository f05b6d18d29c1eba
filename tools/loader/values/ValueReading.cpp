#include <cstdint>
#include <cstring>
#include <string>

#include "tavlen/foundation/text/Unicode.h"
#include "tools/loader/base/EngineString.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/values/BlockType.h"
#include "tools/loader/values/BlockValue.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {

namespace {

template <class T>
T at(const void* memory) {
  T value;
  std::memcpy(&value, memory, sizeof(T));  // NOLINT(bugprone-sizeof-expression): of a pointer
  return value;
}

JSValueRef readInteger(JSContextRef context, const ValueType& type, const void* memory) {
  constexpr std::int64_t kLargest = std::int64_t{1} << 53;
  const auto number = [&](auto value) {
    return JSValueMakeNumber(context, static_cast<double>(value));
  };
  switch (type.size()) {
    case 1:
      return type.isSigned() ? number(at<std::int8_t>(memory)) : number(at<std::uint8_t>(memory));
    case 2:
      return type.isSigned() ? number(at<std::int16_t>(memory)) : number(at<std::uint16_t>(memory));
    case 4:
      return type.isSigned() ? number(at<std::int32_t>(memory)) : number(at<std::uint32_t>(memory));
    default:
      break;
  }
  if (type.isSigned()) {
    const auto value = at<std::int64_t>(memory);
    if (value >= -kLargest && value <= kLargest) return number(value);
    return JSBigIntCreateWithInt64(context, value, nullptr);
  }
  const auto value = at<std::uint64_t>(memory);
  if (value <= std::uint64_t{kLargest}) return number(value);
  return JSBigIntCreateWithUInt64(context, value, nullptr);
}

JSValueRef readReal(JSContextRef context, const ValueType& type, const void* memory) {
  const double value = type.kind() == ValueType::Kind::longReal
                           ? static_cast<double>(at<long double>(memory))
                       : type.size() == sizeof(float) ? static_cast<double>(at<float>(memory))
                                                      : at<double>(memory);
  return JSValueMakeNumber(context, value);
}

JSValueRef readText(Engine& engine, const void* memory) {
  const char* text = at<const char*>(memory);
  if (text == nullptr) return JSValueMakeNull(engine.context());
  return stringValue(engine.context(), wellFormedUTF8(text));
}

/// A function where the encoding tells the block's types, unless these cannot be passed.
JSValueRef readBlock(Engine& engine, const ValueType& type, void* block) {
  if (block != nullptr && !type.blockTypes().empty()) {
    try {
      return BlockValue::make(engine, BlockType::of(type.blockTypes()), block);
    } catch (const UnsupportedType&) {
      // It can still be passed on.
    }
  }
#if defined(__GNU_LIBOBJC__)
  return engine.objects().pointer(block);
#else
  return engine.objects().wrapped(static_cast<id>(block), Ownership::borrowed);
#endif
}

/// Property by property.
JSValueRef readMembers(Engine& engine, const ValueType& type, const void* memory) {
  JSContextRef context = engine.context();
  const bool isArray = type.kind() == ValueType::Kind::array;
  JSObjectRef object = isArray ? JSObjectMakeArray(context, 0, nullptr, nullptr)
                               : JSObjectMake(context, nullptr, nullptr);
  unsigned index = 0;
  for (const ValueType::Member& member : type.members()) {
    const JSValueRef value =
        readValue(engine, *member.type, static_cast<const std::byte*>(memory) + member.offset);
    JSValueRef ignored = nullptr;
    if (isArray)
      JSObjectSetPropertyAtIndex(context, object, index++, value, &ignored);
    else
      JSObjectSetProperty(context, object, member.key->get(), value, kJSPropertyAttributeNone,
                          &ignored);
  }
  return object;
}

/// Where the values of scalars go. On the stack, where the collector sees them.
struct Scalars {
  // NOLINTNEXTLINE(modernize-avoid-c-arrays): uninitialised
  JSValueRef values[StructureMakers::kMostScalars];
  std::size_t count = 0;
};

void readScalars(Engine& engine, const ValueType& type, const std::byte* memory, Scalars& scalars) {
  for (const ValueType::Member& member : type.members()) {
    const std::byte* place = memory + member.offset;
    if (member.type->isAggregate())
      readScalars(engine, *member.type, place, scalars);
    else
      scalars.values[scalars.count++] = readValue(engine, *member.type, place);
  }
}

JSValueRef readAggregate(Engine& engine, const ValueType& type, const void* memory) {
  JSContextRef context = engine.context();
  JSObjectRef maker = engine.structures().makerFor(context, type);
  if (maker == nullptr) return readMembers(engine, type, memory);
  Scalars scalars;
  readScalars(engine, type, static_cast<const std::byte*>(memory), scalars);
  const JSValueRef made =
      JSObjectCallAsFunction(context, maker, nullptr, scalars.count, scalars.values, nullptr);
  return made != nullptr ? made : readMembers(engine, type, memory);
}

}  // namespace

JSValueRef readValue(Engine& engine, const ValueType& type, const void* memory,
                     Ownership ownership) {
  using Kind = ValueType::Kind;
  JSContextRef context = engine.context();
  switch (type.kind()) {
    case Kind::nothing:
      return JSValueMakeUndefined(context);
    case Kind::boolean:
      return JSValueMakeBoolean(context, at<std::uint8_t>(memory) != 0);
    case Kind::integer:
      return readInteger(context, type, memory);
    case Kind::real:
    case Kind::longReal:
      return readReal(context, type, memory);
    case Kind::object:
    case Kind::class_:
      return engine.objects().wrapped(at<id>(memory), ownership);
    case Kind::selector:
      return engine.objects().selector(at<SEL>(memory));
    case Kind::text:
      return readText(engine, memory);
    case Kind::block:
      return readBlock(engine, type, at<void*>(memory));
    case Kind::pointer:
      return engine.objects().pointer(at<void*>(memory));
    case Kind::structure:
    case Kind::array:
      return readAggregate(engine, type, memory);
  }
  return JSValueMakeUndefined(context);
}

}  // namespace tavlen::loader
