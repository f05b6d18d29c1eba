#include "tavlen/introspection/headers/detail/SourceText.h"

#include "tavlen/foundation/text/EscapedText.h"

namespace tavlen {

std::string sourceComment(std::string_view text) {
  std::string comment = "/* ";
  for (const char c : escapedForTerminal(text)) {
    // Compilers warn of the beginning of a comment within another.
    const bool isDelimiter =
        (comment.back() == '*' && c == '/') || (comment.back() == '/' && c == '*');
    if (isDelimiter) comment += ' ';
    comment += c;
  }
  return comment += " */";
}

std::string sourceLiteral(std::string_view text) {
  std::string literal = "\"";
  for (const char c : text) {
    // A question mark could begin a trigraph.
    const bool isPlain = c >= ' ' && c <= '~' && c != '"' && c != '\\' && c != '?';
    if (isPlain) {
      literal += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    literal += '\\';
    for (const int shift : {6, 3, 0}) literal += static_cast<char>('0' + ((byte >> shift) & 7));
  }
  return literal += '"';
}

}  // namespace tavlen
