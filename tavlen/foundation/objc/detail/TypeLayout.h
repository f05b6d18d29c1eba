#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavlen {

/// How a value of an Objective-C type lies in memory on Apple's arm64 devices, where a long double
/// is a double and the letters of long ("l", "L") stand for 32 bits: a long itself is "q" there.
struct TypeLayout {
  enum class Kind : std::uint8_t { scalar, structure, array };

  /// Aggregates by value nest this deep; deeper ones have no layout.
  static constexpr int kDeepest = 128;
  /// In bytes; nothing larger has a layout.
  static constexpr std::uint64_t kLargestSize = std::uint64_t{1} << 48U;

  Kind kind = Kind::scalar;
  /// The size of the one floating-point type that the value consists of; 0 when it holds anything
  /// else.
  std::uint8_t floatSize = 0;
  std::uint64_t size = 0;  ///< in bytes; 0 for void
  std::uint64_t alignment = 1;

  bool operator==(const TypeLayout&) const = default;
};

/// The next multiple of `alignment`, which is not 0.
constexpr std::uint64_t roundedUp(std::uint64_t size, std::uint64_t alignment) {
  return (size + alignment - 1) / alignment * alignment;
}

/// The layout of the one type that `type` is, qualifiers allowed. Nothing for a malformed text and
/// for what has no layout by value: unions, bit fields and what holds them, structures without a
/// body, "?". Pointers are not followed. Work is linear in the text's length.
std::optional<TypeLayout> layoutOfType(std::string_view type);

}  // namespace tavlen
