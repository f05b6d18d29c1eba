#include "tavlen/foundation/toml/detail/TOMLPrescan.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/foundation/toml/TOMLError.h"

namespace tavlen {

namespace {

/// Counts the tables that the TOML library lists and searches: those that dotted keys make, and
/// those that headers make for their parts before the last, and arrays of tables. May count some
/// twice.
class LookUps {
 public:
  /// A key with `dots` dots, whose parts before the last are `parents`.
  void addKey(std::size_t dots, std::string_view parents) {
    count_ += dots * tables_;
    if (parents == parents_) return;  // they are the tables of the key before
    parents_ = parents;
    tables_ += dots;
  }

  /// A header of `parts` parts, which begins with `first`. The root has only one such table.
  void addHeader(std::size_t parts, std::string_view first, bool isArray) {
    count_ += parts * tables_;
    const std::size_t known = first == firstPart_ ? 1 : 0;
    tables_ += std::max(parts - 1 + (isArray ? 1 : 0), known) - known;
    firstPart_ = first;
    parents_ = {};
  }

  /// To be called where a table in brackets begins. Returns what leaveTable() needs at its end.
  std::string_view enterTable() { return std::exchange(parents_, {}); }
  void leaveTable(std::string_view parents) { parents_ = parents; }

  bool areTooMany() const { return count_ > kTOMLLookUps; }

 private:
  std::uint64_t count_ = 0;
  std::uint64_t tables_ = 0;
  std::string_view parents_;
  std::string_view firstPart_;
};

/// Moves over the text, from one character with a meaning to the next.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  std::optional<UnclosedString> scan() {
    if (byteOrderMarkOf(text_)) position_ = byteOrderMarkOf(text_)->length;
    beginKey(position_);
    while (position_ < text_.size() && take(text_[position_])) {
    }
    return std::move(unclosed_);
  }

 private:
  /// A bracket that is not closed yet.
  struct Open {
    bool isTable;
    std::size_t levels;  ///< its own, and those of its key's parts before the last
    std::string_view outerParents;
  };

  /// Processes the character at the position, or what begins with it. Returns false where the text
  /// is malformed.
  bool take(char c) {
    if (c == '#') {
      position_ = std::min(text_.find('\n', position_), text_.size());
      return true;
    }
    if (!isASCII({&c, 1}))
      fail("expected ASCII outside of strings and comments; other keys need quotation marks");
    // Elsewhere the library might read the contents of a string as part of a number.
    if (!isAtStart_ && std::string_view("\"'[{").find(c) != std::string_view::npos)
      fail(std::string("unexpected '") + c + "'");
    const bool precedesStart =
        c == ',' || c == '[' || c == '{' || (isInKey_ && (c == '.' || c == '='));
    if (std::string_view(" \t\r\n").find(c) == std::string_view::npos) isAtStart_ = precedesStart;
    if (c == '"' || c == '\'') return skipString(c);
    if ((c == ']' || c == '}') && !takeClosing()) return false;
    if (c == '[' || c == '{') takeOpening(c);
    if (c == '.' && isInKey_) takeDot();
    if (c == '=' && isInKey_) endKey();
    if (c == ',') takeComma();
    ++position_;
    if (c == '\n' && open_.empty()) beginKey(position_);
    return true;
  }

  void beginKey(std::size_t position) {
    isAtStart_ = true;
    isInKey_ = true;
    isInHeader_ = false;
    keyBegin_ = position;
    dots_ = 0;
  }

  void takeDot() {
    if (dots_++ == 0) firstDot_ = position_;
    lastDot_ = position_;
  }

  void endKey() {
    isInKey_ = false;
    if (dots_ > 0) {
      lookUps_.addKey(dots_, text_.substr(keyBegin_, lastDot_ - keyBegin_));
      requireFewLookUps();
    }
    requireDepth(depth_ + dots_);
    countValue();
  }

  void takeComma() {
    countValue();
    dots_ = 0;
    if (!open_.empty() && open_.back().isTable) beginKey(position_ + 1);
  }

  void takeOpening(char c) {
    if (c == '[' && open_.empty() && isInKey_) return beginHeader();
    open_.push_back({c == '{', dots_ + 1, lookUps_.enterTable()});
    depth_ += dots_ + 1;
    requireDepth(depth_);
    countValue();
    dots_ = 0;
    if (c == '{') beginKey(position_ + 1);
  }

  bool takeClosing() {
    if (open_.empty()) {
      if (!isInHeader_) return false;
      if (isInKey_) endHeader();
      return true;
    }
    depth_ -= open_.back().levels;
    lookUps_.leaveTable(open_.back().outerParents);
    open_.pop_back();
    isInKey_ = false;
    dots_ = 0;
    return true;
  }

  /// At either bracket of [[header]].
  void beginHeader() {
    isArray_ = isInHeader_;
    beginKey(position_ + 1);
    isInHeader_ = true;
  }

  void endHeader() {
    isInKey_ = false;
    const std::size_t end = dots_ > 0 ? firstDot_ : position_;
    lookUps_.addHeader(dots_ + 1, text_.substr(keyBegin_, end - keyBegin_), isArray_);
    requireFewLookUps();
    depth_ = 2 * (dots_ + 1);  // each part may be an array with a table in it
    requireDepth(depth_);
    countValue();
  }

  /// Moves past a backslash and what it escapes: a character, or the end of a line and all blanks
  /// after it. Other characters than ASCII there are undefined behaviour of the library.
  void skipEscape() {
    ++position_;
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t next = std::min(text_.find_first_not_of(kBlanks, position_), text_.size());
    const bool isASCIINext = next == text_.size() || isASCII(text_.substr(next, 1));
    position_ = next > position_ ? next : position_ + 1;
    if (!isASCIINext) fail("expected ASCII after a backslash; escape the character");
  }

  /// Moves past a string, which may be one of several lines. Returns false if it is not closed.
  bool skipString(char quote) {
    const std::string_view all = text_.substr(position_);
    const bool isLong = all.size() > 2 && all[1] == quote && all[2] == quote;
    const std::size_t begin = position_;
    const std::string closing(isLong ? 3 : 1, quote);
    const std::string marks = {quote, quote == '"' ? '\\' : quote, isLong ? quote : '\n'};
    position_ += closing.size();
    while ((position_ = text_.find_first_of(marks, position_)) != std::string_view::npos) {
      const std::string_view rest = text_.substr(position_);
      if (rest.front() == '\n') break;
      if (rest.starts_with(closing)) {
        position_ += closing.size();
        // Of five quotes the first two belong to the text.
        for (int i = 0; isLong && i < 2 && text_.substr(position_).starts_with(quote); ++i)
          ++position_;
        return true;
      }
      if (rest.front() == '\\') {
        skipEscape();
      } else {
        ++position_;
      }
    }
    const TextPosition place = TextPosition::at(text_, begin);
    unclosed_ = {
        place,
        {TextPosition::at(text_, std::min(position_, text_.size())),
         "expected '" + closing + "' to end the string that began at " + description(place)}};
    return false;
  }

  void countValue() {
    if (++values_ > limits::kJSONValues)
      fail("more than " + std::to_string(limits::kJSONValues) + " values");
  }

  void requireDepth(std::size_t depth) const {
    if (depth > limits::kJSONDepth)
      fail("nested deeper than " + std::to_string(limits::kJSONDepth) + " tables and arrays");
  }

  void requireFewLookUps() const {
    if (lookUps_.areTooMany()) fail("too many dotted keys; write tables in braces instead");
  }

  [[noreturn]] void fail(std::string text) const {
    throw TOMLError(TextPosition::at(text_, position_), std::move(text));
  }

  std::string_view text_;
  std::size_t position_ = 0;
  std::vector<Open> open_;
  std::size_t depth_ = 0;  ///< of the header's table and the open brackets
  std::size_t values_ = 0;
  LookUps lookUps_;
  std::optional<UnclosedString> unclosed_;

  /// Whether a key, a part of one, or a value may begin at the position.
  bool isAtStart_ = true;

  // The key at the position, or that of the value there.
  bool isInKey_ = false;
  bool isInHeader_ = false;
  bool isArray_ = false;  ///< of a header
  std::size_t keyBegin_ = 0;
  std::size_t dots_ = 0;
  std::size_t firstDot_ = 0;
  std::size_t lastDot_ = 0;
};

}  // namespace

std::optional<UnclosedString> prescanTOML(std::string_view text) { return Scanner(text).scan(); }

}  // namespace tavlen
