#include "cli/Console.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "tavlen/foundation/Unicode.h"

namespace tavlen::cli {

namespace {

void printLine(std::string_view kind, std::string_view text) {
  const std::string line = "tavlen: " + std::string(kind) + ": " + oneLine(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

std::string oneLine(std::string_view text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  std::string out;
  const std::string valid = utf8FromUTF16(utf16FromUTF8(text));
  for (const char c : valid) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      out += c;
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\t') {
      out += "\\t";
    } else {
      out += "\\x";
      out += kHex[byte >> 4];
      out += kHex[byte & 0xF];
    }
  }
  return out;
}

void printError(std::string_view text) { printLine("error", text); }

void printWarning(std::string_view text) { printLine("warning", text); }

void printData(std::string_view data) {
  if (std::fwrite(data.data(), 1, data.size(), stdout) != data.size() || std::fflush(stdout) != 0) {
    throw std::system_error(errno, std::generic_category(), "standard output");
  }
}

}  // namespace tavlen::cli
