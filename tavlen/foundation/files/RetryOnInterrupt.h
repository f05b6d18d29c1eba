#pragma once

#include <cerrno>

namespace tavlen {

/// Makes the system call `call` again for as long as a signal interrupts it; gives its result, with
/// errno. Not for close(), which has closed all the same.
template <class Call>
auto retryOnInterrupt(const Call& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

}  // namespace tavlen
