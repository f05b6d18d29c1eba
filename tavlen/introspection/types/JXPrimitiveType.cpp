#include "tavlen/introspection/types/JXPrimitiveType.h"

#include <array>

namespace tavlen {

namespace {

struct Kind {
  char character;
  std::string_view name;
};

/// In the order of the enumeration's values.
constexpr std::array<Kind, 15> kKinds = {{{'#', "Class"},
                                          {':', "SEL"},
                                          {'c', "char"},
                                          {'C', "unsigned char"},
                                          {'s', "short"},
                                          {'S', "unsigned short"},
                                          {'i', "int"},
                                          {'I', "unsigned int"},
                                          {'l', "long"},
                                          {'L', "unsigned long"},
                                          {'q', "long long"},
                                          {'Q', "unsigned long long"},
                                          {'f', "float"},
                                          {'d', "double"},
                                          {'B', "BOOL"}}};

const Kind* kindOf(JXPrimitiveType type) {
  const auto index = static_cast<std::size_t>(type);
  return index < kKinds.size() ? &kKinds[index] : nullptr;
}

}  // namespace

JXPrimitiveType JXPrimitiveTypeForEncoding(char character) {
  for (std::size_t i = 0; i < kKinds.size(); ++i) {
    if (kKinds[i].character == character) return static_cast<JXPrimitiveType>(i);
  }
  return JXPrimitiveType::void_;
}

char JXEncodingForPrimitiveType(JXPrimitiveType type) {
  const Kind* kind = kindOf(type);
  return kind != nullptr ? kind->character : '\0';
}

std::string_view JXNameForPrimitiveType(JXPrimitiveType type) {
  const Kind* kind = kindOf(type);
  return kind != nullptr ? kind->name : "void";
}

}  // namespace tavlen
