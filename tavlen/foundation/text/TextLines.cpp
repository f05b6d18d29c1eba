#include "tavlen/foundation/text/TextLines.h"

#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

namespace {

/// The length of the line end at `i`; 0 if there is none.
std::size_t lineEndLength(std::string_view text, std::size_t i) {
  if (text[i] == '\n') return 1;
  if (text[i] == '\r') return i + 1 < text.size() && text[i + 1] == '\n' ? 2 : 1;
  const std::string_view rest = text.substr(i);
  return rest.starts_with("\u2028") || rest.starts_with("\u2029") ? 3 : 0;
}

/// The line `number`, or nothing if the text has fewer lines.
std::optional<std::string_view> existingLine(std::string_view text, std::size_t number) {
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = lineEndLength(text, i);
    if (length > 0) {
      if (--number == 0) return text.substr(begin, i - begin);
      begin = i + length;
    }
    i += length > 0 ? length : 1;
  }
  if (number != 1) return std::nullopt;
  return text.substr(begin);
}

}  // namespace

std::size_t utf16UnitsOf(char byte) {
  if (isUTF8Continuation(byte)) return 0;
  return static_cast<unsigned char>(byte) >= 0xF0 ? 2 : 1;
}

std::size_t lineEndCount(std::string_view text) {
  std::size_t lines = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = lineEndLength(text, i);
    if (length > 0) ++lines;
    i += length > 0 ? length : 1;
  }
  return lines;
}

std::string_view lineAt(std::string_view text, std::size_t number) {
  return existingLine(text, number).value_or(std::string_view());
}

std::optional<std::size_t> offsetAt(std::string_view text, TextPosition position) {
  const auto line = existingLine(text, position.line);
  if (!line) return std::nullopt;
  const auto begin = static_cast<std::size_t>(line->data() - text.data());
  std::size_t column = 1;
  for (std::size_t i = 0; i < line->size(); ++i) {
    const std::size_t units = utf16UnitsOf((*line)[i]);
    if (position.column < column + units) return begin + i;
    column += units;
  }
  if (position.column != column) return std::nullopt;
  return begin + line->size();
}

TextPosition linePositionAt(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  TextPosition position{lineEndCount(before) + 1, 1};
  const std::string_view line = lineAt(before, position.line);
  for (const char byte : line) position.column += utf16UnitsOf(byte);
  return position;
}

}  // namespace tavlen
