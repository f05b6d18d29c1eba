#pragma once

#include <cstddef>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The basic kinds of types. The values are fixed.
enum class JXPrimitiveType : unsigned {
  class_,
  selector,
  char_,
  unsignedChar,
  short_,
  unsignedShort,
  int_,
  unsignedInt,
  long_,
  unsignedLong,
  longLong,
  unsignedLongLong,
  float_,
  double_,
  bool_,
  void_,  ///< all others: `v`, `?`, `D`, a delimiter, an unknown character
};

/// The kind that `character` encodes.
TAVLEN_API JXPrimitiveType JXPrimitiveTypeForEncoding(char character);
/// The character that encodes `type`; 0 for void_ and for invalid values.
TAVLEN_API char JXEncodingForPrimitiveType(JXPrimitiveType type);
/// The name of `type` in C: `unsigned int`.
TAVLEN_API std::string_view JXNameForPrimitiveType(JXPrimitiveType type);

}  // namespace tavlen
