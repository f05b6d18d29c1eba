#include "tavlen/foundation/errors/Placeholders.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace tavlen {

namespace {

/// A placeholder, as read from the text after its percent sign.
struct Placeholder {
  /// In bytes, up to and including the conversion letter.
  std::size_t length;
  /// From 1; 0 for the next argument in turn.
  std::size_t position;
};

bool isOneOf(char character, std::string_view set) {
  return set.find(character) != std::string_view::npos;
}

/// Reads "@", "ld" or "2$@". Flags and widths are not read: an argument is a finished text, and a
/// translator who writes "100% done" does not mean a placeholder.
std::optional<Placeholder> readPlaceholder(std::string_view text) {
  constexpr std::string_view kLengths = "hlqjztL";
  constexpr std::string_view kConversions = "@dDiuUxXoOcCsSfFgGeEaAp";
  std::size_t end = 0;
  std::size_t position = 0;
  if (!text.empty() && isOneOf(text[0], "0123456789")) {
    const auto number = std::from_chars(text.data(), text.data() + text.size(), position);
    end = static_cast<std::size_t>(number.ptr - text.data());
    if (number.ec != std::errc() || position == 0) return std::nullopt;
    if (end == text.size() || text[end++] != '$') return std::nullopt;
  }
  for (int letters = 0; letters < 2 && end < text.size() && isOneOf(text[end], kLengths); ++letters)
    ++end;
  if (end == text.size() || !isOneOf(text[end], kConversions)) return std::nullopt;
  return Placeholder{end + 1, position};
}

}  // namespace

std::string fillPlaceholders(std::string_view format, std::span<const std::string> arguments) {
  if (arguments.empty()) return std::string(format);
  std::string out;
  out.reserve(format.size());
  std::size_t next = 0;
  for (std::size_t i = 0; i < format.size();) {
    const std::size_t percent = std::min(format.find('%', i), format.size());
    out += format.substr(i, percent - i);
    if (percent == format.size()) break;
    i = percent + 1;
    const std::string_view rest = format.substr(i);
    if (rest.starts_with('%')) {
      out += '%';
      ++i;
      continue;
    }
    const std::optional<Placeholder> placeholder = readPlaceholder(rest);
    std::size_t index = arguments.size();
    if (placeholder) index = placeholder->position == 0 ? next++ : placeholder->position - 1;
    if (index >= arguments.size()) {
      out += '%';
      continue;
    }
    out += arguments[index];
    i += placeholder->length;
  }
  return out;
}

}  // namespace tavlen
