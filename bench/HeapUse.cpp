#include "HeapUse.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace tavlen::bench {

namespace {

std::size_t held = 0;
std::size_t highest = 0;

void* counted(void* block) {
  held += malloc_usable_size(block);
  highest = std::max(highest, held);
  return block;
}

void* allocate(std::size_t size) { return counted(std::malloc(std::max<std::size_t>(size, 1))); }

void* allocate(std::size_t size, std::align_val_t alignment) {
  const auto boundary = static_cast<std::size_t>(alignment);
  return counted(std::aligned_alloc(boundary, (size + boundary - 1) / boundary * boundary));
}

void* orThrow(void* block) {
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void release(void* block) {
  held -= malloc_usable_size(block);
  std::free(block);
}

}  // namespace

std::size_t HeapUse::current() { return held; }
std::size_t HeapUse::peak() { return highest; }
void HeapUse::resetPeak() { highest = held; }

}  // namespace tavlen::bench

using tavlen::bench::allocate;
using tavlen::bench::orThrow;
using tavlen::bench::release;

// The standard library's array and sized forms call these.
void* operator new(std::size_t size) { return orThrow(allocate(size)); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return orThrow(allocate(size, alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, alignment);
}
void operator delete(void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete(void* block, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { release(block); }
