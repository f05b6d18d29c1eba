#pragma once

#include <cstdint>

namespace tavlen::loader {

/// The address above which the calling thread's stack has room for a script: a quarter of the stack
/// is below it, and at least what the engine wants. 0 if the stack is unknown.
std::uintptr_t lowestPlaceForScripts();

/// Whether the caller's frame is at or above `lowest`.
[[gnu::always_inline]] inline bool isAtOrAbove(std::uintptr_t lowest) {
  return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) >= lowest;
}

}  // namespace tavlen::loader
