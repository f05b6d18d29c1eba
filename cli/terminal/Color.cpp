#include "cli/terminal/Color.h"

#include <unistd.h>

#include <cstdlib>

namespace tavlen::cli {

namespace {

ColorUse& colorUse() {
  static ColorUse use = ColorUse::automatic;
  return use;
}

/// The value of an environment variable; empty if it is not set.
std::string_view variable(const char* name) {
  const char* const value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe)
  return value == nullptr ? std::string_view() : value;
}

bool isColored(int stream) {
  switch (colorUse()) {
    case ColorUse::always:
      return true;
    case ColorUse::never:
      return false;
    case ColorUse::automatic:
      break;
  }
  const std::string_view terminal = variable("TERM");
  return variable("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb" &&
         ::isatty(stream) == 1;
}

const char* codeOf(ColorRole role) {
  switch (role) {
    case ColorRole::heading:
      return "1";
    case ColorRole::error:
      return "1;31";
    case ColorRole::warning:
      return "1;33";
    case ColorRole::note:
      break;
  }
  return "1;36";
}

}  // namespace

void useColor(ColorUse use) { colorUse() = use; }

std::string colored(std::string_view text, ColorRole role, int stream) {
  if (text.empty() || !isColored(stream)) return std::string(text);
  return std::string("\x1B[").append(codeOf(role)).append("m").append(text).append("\x1B[m");
}

}  // namespace tavlen::cli
