#pragma once

#include <dlfcn.h>

#include <stdexcept>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"

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

/// The stand-ins of the system's Objective-C classes, loaded into this process. What they answer is
/// this object's for as long as it lives; tests/standins/SystemClasses.m says how. One at a time.
class StandIns {
 public:
  /// `members` are those of the script's dictionary, as the XML of a property list.
  explicit StandIns(const std::string& members = "") {
    loadClasses(paths().standInsLibrary.c_str());
    const auto script = folder_.write(
        "script.plist", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" +
                            members + "</dict></plist>");
    ::setenv("TAVLEN_STAND_INS", script.c_str(), 1);
  }
  StandIns(const StandIns&) = delete;
  StandIns& operator=(const StandIns&) = delete;
  ~StandIns() { ::unsetenv("TAVLEN_STAND_INS"); }

 private:
  TemporaryFolder folder_;
};

}  // namespace tavlen
