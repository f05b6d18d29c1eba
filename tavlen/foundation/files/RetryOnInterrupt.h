#pragma once

#include <cerrno>

namespace tavlen {

/// Repeats the system call `call` as long as a signal interrupts it (EINTR). Returns its result,
/// with errno. Not for close(), which closes the descriptor even when interrupted.
template <class Call>
auto retryOnInterrupt(const Call& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace tavlen
