#include "cli/terminal/Console.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/terminal/Diagnostic.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::cli {

void printMessage(std::string_view text) {
  // An error here cannot be reported anywhere.
  (void)std::fwrite(text.data(), 1, text.size(), stderr);
}

void printError(std::string_view text) { print({Diagnostic::kError, std::string(text)}); }

void printWarning(std::string_view text) { print({Diagnostic::kWarning, std::string(text)}); }

void printNote(std::string_view text) { print({Diagnostic::kNote, std::string(text)}); }

void printData(std::string_view data) {
  if (std::fwrite(data.data(), 1, data.size(), stdout) != data.size() || std::fflush(stdout) != 0) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
}

void requireFreeOutput(const std::string& file, bool force) {
  if (!force && file != "-" && isTaken(file))
    throw std::runtime_error(file + ": already exists; use --force to replace it");
}

void writeOutput(const std::string& file, bool force, std::string_view data) {
  if (file == "-") return printData(data);
  requireFreeOutput(file, force);
  replaceFile(file, data);
}

std::string readInput(const std::string& file) {
  constexpr std::size_t kMost = std::size_t{1} << 31;
  const bool isStandard = file == "-";
  const std::string shown = shownInput(file);
  std::error_code ignored;
  const auto status = std::filesystem::status(file, ignored);
  if (!isStandard && !std::filesystem::is_fifo(status) &&
      !std::filesystem::is_character_file(status)) {
    return readFile(file);
  }
  static bool hasReadStandard = false;
  if (isStandard && std::exchange(hasReadStandard, true))
    throw std::runtime_error("the standard input can be read only once");
  const FileDescriptor stream = isStandard
                                    ? FileDescriptor(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0))
                                    : FileDescriptor::open(file, O_RDONLY | O_NOCTTY);
  std::string input;
  std::array<char, 1 << 16> part{};
  while (const std::size_t count = stream.read(part, shown)) {
    if (input.size() + count > kMost) {
      throw std::system_error(EFBIG, std::generic_category(), shown);
    }
    input.append(part.data(), count);
  }
  return input;
}

std::string shownInput(const std::string& file) { return file == "-" ? "standard input" : file; }

}  // namespace tavlen::cli
