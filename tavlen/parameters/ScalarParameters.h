#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// No object: a nil in place of an argument or a result.
struct NilParameter {
  static constexpr std::string_view typeName = "NilParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  static constexpr auto codedFields() { return std::tuple{}; }
  bool operator==(const NilParameter&) const = default;
};

/// Source text of the hook language, put in place as it stands.
struct CodeParameter {
  static constexpr std::string_view typeName = "CodeParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  std::string code;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("code", &CodeParameter::code)};
  }
  bool operator==(const CodeParameter&) const = default;
};

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

  static constexpr auto codedFields() {
    return std::tuple{requiredField("value", &ValueParameter::value)};
  }
  bool operator==(const ValueParameter&) const = default;
};

/// A URL, as its text. The text is not checked here: the run time makes the URL of it.
struct URLParameter {
  static constexpr std::string_view typeName = "URLParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  std::string string;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("string", &URLParameter::string)};
  }
  bool operator==(const URLParameter&) const = default;
};

/// A point in time.
struct DateParameter {
  static constexpr std::string_view typeName = "DateParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  Date date;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("date", &DateParameter::date)};
  }
  bool operator==(const DateParameter&) const = default;
};

/// A colour; each component lies from 0 to 1, which nothing here enforces.
struct ColorParameter {
  static constexpr std::string_view typeName = "ColorParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 0;

  /// A grey: `share` is that of all three colours.
  static constexpr ColorParameter withWhite(double share, double alpha) {
    return {share, share, share, alpha};
  }
  static const ColorParameter black;
  static const ColorParameter white;

  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("red", &ColorParameter::red),
        requiredField("green", &ColorParameter::green),
        requiredField("blue", &ColorParameter::blue),
        requiredField("alpha", &ColorParameter::alpha),
    };
  }
  bool operator==(const ColorParameter&) const = default;
};

inline constexpr ColorParameter ColorParameter::black = {0, 0, 0, 1};
inline constexpr ColorParameter ColorParameter::white = {1, 1, 1, 1};

}  // namespace tavlen
