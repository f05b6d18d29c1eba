#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"

namespace tavlen {

/// The kind's name for each type of value. It stands in stored documents, so it is spelt out.
template <class Value>
inline constexpr std::string_view kValueParameterName = {};
template <>
inline constexpr std::string_view kValueParameterName<std::int64_t> = "_ValueParameter<Int64>";
template <>
inline constexpr std::string_view kValueParameterName<std::uint64_t> = "_ValueParameter<UInt64>";
template <>
inline constexpr std::string_view kValueParameterName<double> = "_ValueParameter<Double>";
template <>
inline constexpr std::string_view kValueParameterName<std::string> = "_ValueParameter<String>";
template <>
inline constexpr std::string_view kValueParameterName<bool> = "_ValueParameter<Bool>";

/// A plain value: a signed or unsigned 64-bit integer, a 64-bit float, a text or a Boolean.
template <class Value>
struct ValueParameter {
  static constexpr std::string_view typeName = kValueParameterName<Value>;
  static_assert(!typeName.empty(), "the family holds no parameter of this type");
  /// The whole name, unlike that of other kinds: each type of value is a kind of its own.
  static constexpr std::string_view identifier = typeName;

  Value value{};

  /// Throws EncodingError for a float that is not finite and a text that is not UTF-8.
  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("value", &ValueParameter::value)};
  }
  bool operator==(const ValueParameter&) const = default;
};

extern template struct ValueParameter<std::int64_t>;
extern template struct ValueParameter<std::uint64_t>;
extern template struct ValueParameter<double>;
extern template struct ValueParameter<std::string>;
extern template struct ValueParameter<bool>;

}  // namespace tavlen
