#include "tavlen/foundation/base/SharedLibrary.h"

#ifndef __APPLE__
#include <dlfcn.h>

#include <stdexcept>
#endif

namespace tavlen {

#ifdef __APPLE__

SharedLibrary::SharedLibrary(const char* /*name*/) {}

#else

namespace {

[[noreturn]] void fail(const char* name) {
  const char* reason = ::dlerror();  // NOLINT(concurrency-mt-unsafe)
  throw std::runtime_error(reason != nullptr ? reason : name);
}

}  // namespace

SharedLibrary::SharedLibrary(const char* name)
    : handle_(::dlopen(name, RTLD_LAZY | RTLD_NODELETE)) {
  if (handle_ == nullptr) fail(name);
}

void* SharedLibrary::address(const char* name) const {
  void* found = ::dlsym(handle_, name);
  if (found == nullptr) fail(name);
  return found;
}

#endif

}  // namespace tavlen
