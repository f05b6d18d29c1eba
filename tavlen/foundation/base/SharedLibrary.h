#pragma once

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A library of the system that is loaded when it is first needed, because loading it takes a large
/// part of the start of a program. It stays loaded. Apple's systems have such libraries at hand, or
/// they are linked statically, so there its functions are taken from the program.
class TAVLEN_API SharedLibrary {
 public:
  /// Loads the library of that file name. Throws std::runtime_error with the reason. Threads: any.
  explicit SharedLibrary(const char* name);

  /// Sets `function` to the one of that name. Throws std::runtime_error if the library lacks it.
  /// Not on Apple's systems. Threads: any.
  template <class Function>
  void find(const char* name, Function& function) const {
    function = reinterpret_cast<Function>(address(name));
  }

 private:
  void* address(const char* name) const;

  void* handle_ = nullptr;
};

}  // namespace tavlen

/// A record's pointer to the function of that name.
// NOLINTNEXTLINE(bugprone-macro-parentheses): a name that is declared
#define TAVLEN_LIBRARY_FUNCTION(name) decltype(&::name) name;
/// Sets that pointer in the record `functions`, from the SharedLibrary `library`.
#ifdef __APPLE__
#define TAVLEN_FIND_FUNCTION(name) functions.name = &::name;
#else
#define TAVLEN_FIND_FUNCTION(name) library.find(#name, functions.name);
#endif
