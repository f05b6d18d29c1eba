#include "tavlen/foundation/objc/detail/TypeLayout.h"

#include <algorithm>

#include "tavlen/foundation/objc/detail/TypeScanner.h"

namespace tavlen {

namespace {

using Neighbour = TypeScanner::Neighbour;

std::optional<TypeLayout> layoutOfScalar(char letter) {
  const auto ofSize = [](std::uint64_t size) { return TypeLayout{size, size}; };
  switch (letter) {
    case 'v':
      return TypeLayout();
    case 'c':
    case 'C':
    case 'B':
      return ofSize(1);
    case 's':
    case 'S':
      return ofSize(2);
    case 'i':
    case 'I':
    case 'l':
    case 'L':
    case 'f':
      return ofSize(4);
    case 'q':
    case 'Q':
    case '#':
    case ':':
    case '*':
    case 'd':
    case 'D':
      return ofSize(8);
    case 't':
    case 'T':
      return ofSize(16);
    default:
      return std::nullopt;
  }
}

bool isComplex(std::string_view qualifiers, char letter) {
  constexpr std::string_view kNumbers = "cislqCISLQfdDtT";
  return qualifiers.find('j') != std::string_view::npos &&
         kNumbers.find(letter) != std::string_view::npos;
}

/// The lowest multiple of `alignment`, which is not 0, that is not below `size`.
constexpr std::uint64_t roundedUp(std::uint64_t size, std::uint64_t alignment) {
  return (size + alignment - 1) / alignment * alignment;
}

/// Appends `member` to the layout of an aggregate. Returns false when the result is too large.
bool append(TypeLayout& whole, const TypeLayout& member) {
  whole.alignment = std::max(whole.alignment, member.alignment);
  whole.size = roundedUp(whole.size, member.alignment) + member.size;
  return whole.size <= TypeLayout::kLargestSize;
}

class LayoutReader {
 public:
  explicit LayoutReader(std::string_view text) : scanner_(text) {}

  std::optional<TypeLayout> read() {
    const auto layout = type(0, Neighbour::any);
    return scanner_.isAtEnd() ? layout : std::nullopt;
  }

 private:
  std::optional<TypeLayout> type(int depth, Neighbour after) {
    const std::string_view qualifiers = scanner_.skipQualifiers();
    const char c = scanner_.next();
    if (c == '{') return structure(depth);
    if (c == '[') return array(depth);
    if (c == '^' || c == '@') {
      if (!scanner_.skipType(after)) return std::nullopt;
      return TypeLayout{8, 8};
    }
    auto layout = layoutOfScalar(c);
    if (!layout || !scanner_.skip(c)) return std::nullopt;
    if (isComplex(qualifiers, c)) layout->size *= 2;
    return layout;
  }

  std::optional<TypeLayout> structure(int depth) {
    if (depth >= TypeLayout::kDeepest) return std::nullopt;
    scanner_.skip('{');
    if (!scanner_.skipName() || !scanner_.skip('=')) return std::nullopt;
    const bool hasNames = scanner_.next() == '"';
    TypeLayout whole;
    while (!scanner_.skip('}')) {
      if (hasNames && !scanner_.skipQuoted()) return std::nullopt;
      const auto member = type(depth + 1, hasNames ? Neighbour::fieldName : Neighbour::any);
      if (!member || !append(whole, *member)) return std::nullopt;
    }
    whole.size = roundedUp(whole.size, whole.alignment);
    return whole;
  }

  std::optional<TypeLayout> array(int depth) {
    if (depth >= TypeLayout::kDeepest) return std::nullopt;
    scanner_.skip('[');
    const auto count = scanner_.skipNumber();
    if (!count) return std::nullopt;
    const auto element = type(depth + 1, Neighbour::any);
    if (!element || !scanner_.skip(']')) return std::nullopt;
    if (element->size > 0 && *count > TypeLayout::kLargestSize / element->size) return std::nullopt;
    return TypeLayout{*count * element->size, element->alignment};
  }

  TypeScanner scanner_;
};

}  // namespace

std::optional<TypeLayout> layoutOfType(std::string_view type) { return LayoutReader(type).read(); }

}  // namespace tavlen
