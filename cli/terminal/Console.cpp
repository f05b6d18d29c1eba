#include "cli/terminal/Console.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::cli {

namespace {

void printLine(std::string_view kind, std::string_view text) {
  printMessage("tavlen: " + std::string(kind) + ": " + shownLine(text) + "\n");
}

}  // namespace

void printMessage(std::string_view text) {
  // An error here cannot be reported anywhere.
  (void)std::fwrite(text.data(), 1, text.size(), stderr);
}

void printError(std::string_view text) { printLine("error", text); }

void printWarning(std::string_view text) { printLine("warning", text); }

void printData(std::string_view data) {
  if (std::fwrite(data.data(), 1, data.size(), stdout) != data.size() || std::fflush(stdout) != 0) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
}

std::string readInput(const std::string& file) {
  if (file != "-") return readFile(file);
  constexpr std::size_t kMost = std::size_t{1} << 31;
  std::string input;
  std::array<char, 1 << 16> part{};
  while (const std::size_t count = std::fread(part.data(), 1, part.size(), stdin)) {
    if (input.size() + count > kMost) {
      throw std::system_error(EFBIG, std::generic_category(), "standard input");
    }
    input.append(part.data(), count);
  }
  if (std::ferror(stdin) != 0) {
    throw std::system_error(errno, std::generic_category(), "standard input");
  }
  return input;
}

}  // namespace tavlen::cli
