#pragma once

#include <dlfcn.h>

#include <stdexcept>

#if defined(__SANITIZE_ADDRESS__)
#define TAVLEN_FINDS_LEAKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TAVLEN_FINDS_LEAKS
#endif
#endif
#ifdef TAVLEN_FINDS_LEAKS
#include <sanitizer/lsan_interface.h>
#endif

namespace tavlen {

/// Loads the library at `path`, which may define Objective-C classes, for good: the run time cannot
/// forget a class, and keeps what it made for each.
inline void loadClasses(const char* path) {
#ifdef TAVLEN_FINDS_LEAKS
  const __lsan::ScopedDisabler keepsWhatItMakes;
#endif
  if (::dlopen(path, RTLD_NOW | RTLD_NODELETE) == nullptr) throw std::runtime_error(::dlerror());
}

}  // namespace tavlen
