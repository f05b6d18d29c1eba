#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tavlen {

/// A place in a JSON text and the moves over its tokens. The layer below JSONDecoder, not for other
/// users.
///
/// The text must be well-formed UTF-8. Every move throws DecodingError::dataCorrupted, with line
/// and column, where the text is malformed.
class JSONScanner {
 public:
  explicit JSONScanner(std::string_view text);

  /// Moves over white space and gives the character that a value or a delimiter begins with; NUL at
  /// the end.
  char peek();
  bool atEnd() { return peek() == '\0' && position_ == end_; }

  const char* position() const { return position_; }
  void setPosition(const char* position) { position_ = position; }

  /// Moves over the opening bracket that stands here. False when the container is empty, which is
  /// then behind.
  bool open(char closing);
  /// Moves over a comma and gives true, or over `closing` and gives false.
  bool next(char closing);
  /// Moves over a member's key and its colon. The text lies in the document, or in `storage` if it
  /// had escapes.
  std::string_view key(std::string& storage);

  /// Moves over the string that stands here; `out` gets its text.
  void string(std::string& out);
  /// Moves over the string that stands here. The text lies in the document, or in `storage` if it
  /// had escapes.
  std::string_view stringView(std::string& storage);
  /// Moves over the number that stands here and gives its text, which may be malformed.
  std::string_view number();
  /// Moves over `word`, one of true, false and null.
  void literal(std::string_view word);
  /// Moves over any value. Strings and numbers in it are not checked.
  void skipValue() { skipValue(Again::no); }
  /// The same for a value that is read afterwards: it is remembered where its containers end, so
  /// that passing over it again costs nothing.
  void skipValueAhead() { skipValue(Again::yes); }

  void setDepth(std::size_t depth) { depth_ = depth; }
  std::size_t depth() const { return depth_; }

  [[noreturn]] void fail(std::string_view reason) const;

 private:
  enum class Again { no, yes };

  /// Looking ahead for a key passes over a container that is read afterwards, and what nests in it
  /// the same way would be passed over again at each level. Containers of this many bytes are
  /// remembered against that.
  static constexpr std::ptrdiff_t kRememberedLength = 4096;

  const char* endOfPlainText(const char* from) const;
  const char* endOfSkippedString(const char* from) const;
  void unescape(std::string& out);
  char32_t unicodeEscape();
  char32_t fourHexDigits();
  void deepen();
  void skipScalar(char first);
  void skipValue(Again again);
  void skipContainer(char opening, Again again);

  const char* begin_;
  const char* position_;
  const char* end_;
  std::size_t depth_ = 0;
  std::unordered_map<const char*, const char*> skippedContainers_;
};

}  // namespace tavlen
