#include "cli/terminal/InputLines.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <system_error>

#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen::cli {

namespace {

constexpr std::size_t kLongestLine = std::size_t{16} << 20;

std::string_view withoutReturn(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

/// Reads a part of the input and returns its length; 0 at the end.
std::size_t readSome(std::array<char, 1 << 16>& buffer) {
  const ssize_t count =
      retryOnInterrupt([&] { return ::read(STDIN_FILENO, buffer.data(), buffer.size()); });
  if (count < 0) throw std::system_error(errno, std::generic_category(), "standard input");
  return static_cast<std::size_t>(count);
}

}  // namespace

void forEachInputLine(FunctionRef<void(std::string_view)> line, FunctionRef<void()> pause) {
  std::array<char, 1 << 16> buffer{};
  std::string begun;  // an incomplete line
  while (const std::size_t count = readSome(buffer)) {
    std::string_view rest(buffer.data(), count);
    for (std::size_t end = 0; (end = rest.find('\n')) != std::string_view::npos;) {
      begun += rest.substr(0, end);
      line(withoutReturn(begun));
      begun.clear();
      rest.remove_prefix(end + 1);
    }
    begun += rest;
    if (begun.size() > kLongestLine) {
      throw std::system_error(EFBIG, std::generic_category(), "a line of the standard input");
    }
    pause();
  }
  if (!begun.empty()) line(withoutReturn(begun));
  pause();
}

}  // namespace tavlen::cli
