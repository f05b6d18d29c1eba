#pragma once

#include <cstddef>

#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen::fuzz {

/// What work on an input may cost: so much for any, and so much for each of its bytes. The times
/// are those of a build with sanitizers and without optimisation; they tell what grows faster than
/// its input, and nothing about speed.
struct Budget {
  double bytes = 1 << 20;
  double bytesPerByte = 32;
  double seconds = 2;
  double secondsPerByte = 20e-6;
};

/// Runs `work` and stops the process with a message when it took more than `budget` allows for an
/// input of `size` bytes: memory from operator new, and processor time of this thread. What `work`
/// throws passes through, and is not judged.
void requireWithin(const Budget& budget, std::size_t size, FunctionRef<void()> work);

}  // namespace tavlen::fuzz
