#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// A nil.
struct TAVLEN_API NilParameter {
  static constexpr std::string_view typeName = "NilParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  static constexpr auto codedFields() { return std::tuple{}; }
  bool operator==(const NilParameter&) const = default;
};

/// Source text in the hook language, which is inserted unchanged.
struct TAVLEN_API CodeParameter {
  static constexpr std::string_view typeName = "CodeParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  /// An expression in the hook language.
  std::string code;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("code", &CodeParameter::code)};
  }
  bool operator==(const CodeParameter&) const = default;
};

/// The kind's name for each type of value. Stored documents contain it, so it is written out rather
/// than derived from the C++ type.
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
  /// Unlike other kinds' identifiers, the whole name, because it has to tell the value types apart.
  static constexpr std::string_view identifier = typeName;

  /// The value itself.
  Value value{};

  static constexpr auto codedFields() {
    return std::tuple{requiredField("value", &ValueParameter::value)};
  }
  bool operator==(const ValueParameter&) const = default;
};

/// A URL, as text. It is not checked here; the URL is created from it at run time.
struct TAVLEN_API URLParameter {
  static constexpr std::string_view typeName = "URLParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  /// The URL's text.
  std::string string;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("string", &URLParameter::string)};
  }
  bool operator==(const URLParameter&) const = default;
};

/// A point in time.
struct TAVLEN_API DateParameter {
  static constexpr std::string_view typeName = "DateParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  /// The point in time.
  Date date;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("date", &DateParameter::date)};
  }
  bool operator==(const DateParameter&) const = default;
};

/// A colour. Each component is meant to lie between 0 and 1; this is not enforced.
struct TAVLEN_API ColorParameter {
  static constexpr std::string_view typeName = "ColorParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  /// From 0 to 1, as all components.
  double red = 0;
  /// From 0 to 1.
  double green = 0;
  /// From 0 to 1.
  double blue = 0;
  /// Opacity: 0 is transparent, 1 is opaque.
  double alpha = 0;

  /// A grey: red, green and blue are all `share`.
  static constexpr ColorParameter withWhite(double share, double alpha) {
    return {share, share, share, alpha};
  }
  /// Opaque black.
  static const ColorParameter black;
  /// Opaque white.
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
