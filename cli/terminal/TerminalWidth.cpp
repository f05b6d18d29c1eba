#include "cli/terminal/TerminalWidth.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

namespace tavlen::cli {

std::size_t terminalColumns(int stream) {
  constexpr std::size_t kUsual = 80;
  winsize size{};
  const bool isKnown = ::ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return isKnown ? size.ws_col : kUsual;
}

std::size_t textColumns() {
  constexpr std::size_t kLeast = 40;
  std::size_t columns = 0;
  // No other thread changes the environment.
  if (const char* variable = std::getenv("COLUMNS")) {  // NOLINT(concurrency-mt-unsafe)
    const std::string_view text = variable;
    std::from_chars(text.data(), text.data() + text.size(), columns);
  }
  return std::max(columns > 0 ? columns : terminalColumns(STDOUT_FILENO), kLeast);
}

}  // namespace tavlen::cli
