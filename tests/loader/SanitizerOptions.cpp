// Options of the address sanitizer for this program alone.
#include <sanitizer/asan_interface.h>

/// A tweak and its hooks live as long as the process, and only the engine's heap and the code of
/// methods lead to them, where the leak checker does not look. Leaks of objects are found by
/// counting them.
extern "C" const char* __asan_default_options() {  // NOLINT: the sanitizer's name
  return "detect_leaks=0";
}
