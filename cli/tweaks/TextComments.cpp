#include "cli/tweaks/TextComments.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen::cli {

namespace {

/// What the lines of the messages begin with, and no line of the user's.
constexpr std::string_view kMark = "#! tavlen: ";

/// The lines, each with its end.
std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

std::string commentOf(const Diagnostic& message) {
  return std::string(kMark) + message.severity + " at column " +
         std::to_string(message.column.value_or(1)) + ": " + escapedForTerminal(message.message) +
         "\n";
}

}  // namespace

std::string withComments(std::string_view text, std::span<const Diagnostic> messages) {
  const std::vector<std::string_view> lines = linesOf(text);
  // A comment after a last line without an end would give it one.
  const bool hasEnd = text.empty() || text.ends_with('\n');
  const std::uint64_t last = hasEnd ? lines.size() + 1 : lines.size();
  std::string result;
  for (std::uint64_t line = 1; line <= lines.size() + 1; ++line) {
    for (const Diagnostic& message : messages) {
      if (std::min(message.line.value_or(1), last) == line) result += commentOf(message);
    }
    if (line <= lines.size()) result += lines[line - 1];
  }
  return result;
}

std::string withoutComments(std::string_view text) {
  std::string result;
  for (const std::string_view line : linesOf(text)) {
    if (!line.starts_with(kMark)) result += line;
  }
  return result;
}

}  // namespace tavlen::cli
