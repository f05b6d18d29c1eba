#include "tavlen/foundation/MethodTypes.h"

#include <string>

namespace tavlen {

namespace {

constexpr std::string_view kQualifiers = "rnNoORVAj";
constexpr std::string_view kScalars = "cislqCISLQfdDBvtT*#:?";

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Moves over a quoted text, the opening quotation mark included. False when it does not end.
bool skipQuoted(std::string_view text, std::size_t& i) {
  const std::size_t end = text.find('"', i + 1);
  if (end == std::string_view::npos) return false;
  i = end + 1;
  return true;
}

/// Moves over everything up to the bracket that closes the one at `i`. What stands inside is not
/// judged.
bool skipBracketed(std::string_view text, std::size_t& i) {
  std::string closings;
  while (i < text.size()) {
    const char c = text[i];
    if (c == '"') {
      if (!skipQuoted(text, i)) return false;
      continue;
    }
    ++i;
    switch (c) {
      case '{':
        closings += '}';
        break;
      case '(':
        closings += ')';
        break;
      case '[':
        closings += ']';
        break;
      case '<':
        closings += '>';
        break;
      case '}':
      case ')':
      case ']':
      case '>':
        if (closings.empty() || closings.back() != c) return false;
        closings.pop_back();
        if (closings.empty()) return true;
        break;
      default:
        break;
    }
  }
  return false;
}

/// Moves over what may follow an "@": the mark of a block with its signature, or a class's name.
bool skipObjectSuffix(std::string_view text, std::size_t& i) {
  if (i < text.size() && text[i] == '?') {
    ++i;
    return i >= text.size() || text[i] != '<' || skipBracketed(text, i);
  }
  return i >= text.size() || text[i] != '"' || skipQuoted(text, i);
}

bool skipType(std::string_view text, std::size_t& i) {
  while (i < text.size() && (kQualifiers.find(text[i]) != std::string_view::npos || text[i] == '^'))
    ++i;
  if (i >= text.size()) return false;
  const char c = text[i];
  if (c == '{' || c == '(' || c == '[') return skipBracketed(text, i);
  ++i;
  if (c == '@') return skipObjectSuffix(text, i);
  if (c == 'b') {
    while (i < text.size() && isDigit(text[i])) ++i;
    return true;
  }
  return kScalars.find(c) != std::string_view::npos;
}

void skipOffset(std::string_view text, std::size_t& i) {
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  while (i < text.size() && isDigit(text[i])) ++i;
}

}  // namespace

std::optional<MethodTypes> splitMethodTypes(std::string_view encoding) {
  MethodTypes types;
  for (std::size_t i = 0; i < encoding.size(); skipOffset(encoding, i)) {
    const std::size_t begin = i;
    if (!skipType(encoding, i)) return std::nullopt;
    const std::string_view type = encoding.substr(begin, i - begin);
    if (begin == 0) {
      types.result = type;
    } else {
      types.arguments.push_back(type);
    }
  }
  if (types.result.empty()) return std::nullopt;
  return types;
}

}  // namespace tavlen
