#pragma once

#include <cstddef>

namespace tavlen::bench {

/// The heap that the program holds through operator new, in bytes that the allocator really gives
/// away. A program that contains HeapUse.cpp counts; it must not start threads meanwhile.
struct HeapUse {
  static std::size_t current();
  /// The most since the last resetPeak().
  static std::size_t peak();
  static void resetPeak();
};

}  // namespace tavlen::bench
