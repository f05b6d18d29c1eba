#pragma once

#include <cstddef>

namespace tavlen::bench {

/// The program's heap use through operator new, in bytes as rounded up by the allocator. Linking
/// HeapUse.cpp replaces operator new by a counting one, which is not thread-safe.
struct HeapUse {
  /// The bytes in use now.
  static std::size_t current();
  /// The highest value of current() since the last resetPeak().
  static std::size_t peak();
  /// Starts a new measurement of peak().
  static void resetPeak();
};

}  // namespace tavlen::bench
