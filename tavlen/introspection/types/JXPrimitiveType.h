#pragma once

#include <cstddef>
#include <string_view>

namespace tavlen {

/// The basic kinds. The values are fixed.
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
  void_,  ///< whatever is none of the others: `v`, `?`, `D`, a delimiter, an unknown character
};

/// The kind that `character` stands for.
JXPrimitiveType JXPrimitiveTypeForEncoding(char character);
/// The character that stands for `type`; 0 for void_ and for values that are none.
char JXEncodingForPrimitiveType(JXPrimitiveType type);
/// How C names `type`: `unsigned int`.
std::string_view JXNameForPrimitiveType(JXPrimitiveType type);

}  // namespace tavlen
