#include "tools/loader/base/ThreadStack.h"

#include <pthread.h>

#include <algorithm>
#include <cstddef>

namespace tavlen::loader {

namespace {

struct Stack {
  std::uintptr_t begin;  ///< its lowest address; 0 if that is unknown
  std::size_t size;
};

Stack ownStack() {
#ifdef __APPLE__
  const std::size_t size = ::pthread_get_stacksize_np(::pthread_self());
  return {reinterpret_cast<std::uintptr_t>(::pthread_get_stackaddr_np(::pthread_self())) - size,
          size};
#else
  pthread_attr_t attributes;
  if (::pthread_getattr_np(::pthread_self(), &attributes) != 0) return {0, 0};
  void* begin = nullptr;
  std::size_t size = 0;
  const bool isKnown = ::pthread_attr_getstack(&attributes, &begin, &size) == 0;
  ::pthread_attr_destroy(&attributes);
  return {isKnown ? reinterpret_cast<std::uintptr_t>(begin) : 0, size};
#endif
}

}  // namespace

std::uintptr_t lowestPlaceForScripts() {
  // The engine refuses to run a script with less than 128 KiB.
  constexpr std::size_t kLeast = std::size_t{160} << 10U;
  const Stack stack = ownStack();
  return stack.begin == 0 ? 0 : stack.begin + std::max(stack.size / 4, kLeast);
}

}  // namespace tavlen::loader
