#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavlen {

/// How a value of an Objective-C type lies in memory on Apple's arm64 devices, where a long double
/// is a double and the letters of long ("l", "L") stand for 32 bits: a long itself is "q" there.
struct TypeLayout {
  /// Aggregates by value nest this deep; deeper ones have no layout.
  static constexpr int kDeepest = 128;
  /// In bytes; nothing larger has a layout.
  static constexpr std::uint64_t kLargestSize = std::uint64_t{1} << 48U;

  std::uint64_t size = 0;  ///< in bytes; 0 for void
  std::uint64_t alignment = 1;

  bool operator==(const TypeLayout&) const = default;
};

/// The layout of the one type that `type` is, qualifiers allowed. Nothing for a malformed text and
/// for what has no layout by value: unions, bit fields and what holds them, structures without a
/// body, "?". Pointers are not followed. Work is linear in the text's length.
std::optional<TypeLayout> layoutOfType(std::string_view type);

}  // namespace tavlen
