#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

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

  /// Never fails: a component that is not finite is written "inf" or "nan", and refused when it is
  /// stored.
  void appendOBJSValue(std::string& out) const;
  std::string objsValue() const;

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
