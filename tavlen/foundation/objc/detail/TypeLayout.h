#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tavlen {

/// The memory layout of an Objective-C type on Apple's arm64 devices, by the rules of their C ABI:
/// scalars are aligned to their size, aggregates to their most aligned member. A long double is a
/// double there. The letters "l" and "L" mean 32 bits; a 64-bit long is encoded as "q".
struct TypeLayout {
  /// Maximum nesting of aggregates by value; deeper types have no layout.
  static constexpr int kDeepest = 128;
  /// In bytes; larger types have no layout.
  static constexpr std::uint64_t kLargestSize = std::uint64_t{1} << 48U;

  std::uint64_t size = 0;  ///< in bytes; 0 for void
  std::uint64_t alignment = 1;

  bool operator==(const TypeLayout&) const = default;
};

/// The layout of `type`, a single type, possibly with qualifiers. Returns nothing for malformed
/// text and for types without a layout by value: unions, bit fields and aggregates that contain
/// them, structures without a body, "?". Pointers are not followed. Work is linear in the text's
/// length.
std::optional<TypeLayout> layoutOfType(std::string_view type);

}  // namespace tavlen
