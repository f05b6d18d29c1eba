#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/text/TextPosition.h"

namespace tavlen {

/// A position in a JSON text that moves from token to token. Used only by JSONDecoder.
///
/// The text must be well-formed UTF-8. All moves throw DecodingError::dataCorrupted, with line and
/// column, where the JSON is malformed.
class JSONScanner {
 public:
  explicit JSONScanner(std::string_view text);

  /// Skips white space and returns the first character of the next value or delimiter; NUL at the
  /// end.
  char peek() {
    while (position_ != end_ && isWhiteSpace(*position_)) ++position_;
    return position_ == end_ ? '\0' : *position_;
  }
  bool atEnd() { return peek() == '\0' && position_ == end_; }

  const char* position() const { return position_; }
  void setPosition(const char* position) { position_ = position; }

  /// Moves past the opening bracket at the position. Returns false for an empty container, after
  /// moving past its `closing` bracket too.
  bool open(char closing) {
    if (++depth_ > limits::kJSONDepth) failForDepth();
    ++position_;
    if (peek() != closing) return true;
    ++position_;
    --depth_;
    return false;
  }
  /// Moves past a comma and returns true, or past `closing` and returns false.
  bool next(char closing) {
    const char c = peek();
    if (c != ',' && c != closing) failForEnd();
    ++position_;
    if (c == ',') return true;
    --depth_;
    return false;
  }
  /// Moves past a member's key and its colon. The result refers to the document, or to `storage` if
  /// the key has escapes.
  std::string_view key(std::string& storage);
  /// Moves past the key `expected` and its colon, if they are next and written without a space
  /// between them. `expected` isPlainText(); nothing is expected if it is empty. Costs less than
  /// key(), which looks for the end.
  bool passKey(std::string_view expected) {
    if (peek() != '"' || expected.empty()) return false;
    const std::size_t length = expected.size();
    const char* const text = position_ + 1;
    if (static_cast<std::size_t>(end_ - text) < length + 2 ||
        std::memcmp(text, expected.data(), length) != 0 || text[length] != '"' ||
        text[length + 1] != ':') {
      return false;
    }
    lastKey_ = position_;
    position_ = text + length + 2;
    return true;
  }
  /// Where the last key begins.
  const char* lastKey() const { return lastKey_; }

  /// Moves past the string at the position and stores its text in `out`.
  void string(std::string& out);
  /// Moves past the string at the position. The result refers to the document, or to `storage` if
  /// the string has escapes.
  std::string_view stringView(std::string& storage);
  /// Moves past the number at the position and returns its text, which may be malformed.
  std::string_view number();
  /// Moves past `word`: true, false or null.
  void literal(std::string_view word);
  /// Moves past any value. Strings and numbers in it are not checked.
  void skipValue() { skipValue(Again::no); }
  /// The same for a value that is decoded later: caches the ends of its large containers, so that
  /// skipping them again takes constant time.
  void skipValueAhead() { skipValue(Again::yes); }

  void setDepth(std::size_t depth) { depth_ = depth; }
  std::size_t depth() const { return depth_; }

  /// The line and column of `place` in the text.
  TextPosition textPositionOf(const char* place) const;

  [[noreturn]] void fail(std::string_view reason) const;

 private:
  enum class Again { no, yes };

  /// Key look-up skips containers that are decoded later, so nested look-ups would take quadratic
  /// time. The ends of containers longer than this, in bytes, are cached.
  static constexpr std::ptrdiff_t kRememberedLength = 4096;

  const char* endOfPlainText(const char* from) const;
  const char* endOfSkippedString(const char* from) const;
  void unescape(std::string& out);
  char32_t unicodeEscape();
  char32_t fourHexDigits();
  static constexpr bool isWhiteSpace(char c) {
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
  }
  [[noreturn]] void failForDepth() const;
  [[noreturn]] void failForEnd() const;
  void skipScalar(char first);
  void skipValue(Again again);
  void skipContainer(char opening, Again again);

  const char* begin_;
  const char* position_;
  const char* end_;
  const char* lastKey_ = nullptr;
  std::size_t depth_ = 0;
  std::unordered_map<const char*, const char*> skippedContainers_;
};

}  // namespace tavlen
