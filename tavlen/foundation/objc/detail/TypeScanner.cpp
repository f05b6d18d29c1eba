#include "tavlen/foundation/objc/detail/TypeScanner.h"

#include <charconv>
#include <string>
#include <system_error>

#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

namespace {

constexpr std::string_view kScalars = "cislqCISLQfdDBvtT*#:?";

/// A stack of open brackets.
class OpenBrackets {
 public:
  bool areAllClosed() const { return closings_.empty(); }

  /// Processes `c`. Returns false when it closes a bracket that is not open. An unmatched ">" is
  /// accepted: C++ names contain angle brackets as operators.
  bool meet(char c) {
    switch (c) {
      case '{':
        closings_ += '}';
        return true;
      case '(':
        closings_ += ')';
        return true;
      case '[':
        closings_ += ']';
        return true;
      case '<':
        closings_ += '>';
        return true;
      case '>':
        if (!closings_.empty() && closings_.back() == c) closings_.pop_back();
        return true;
      case '}':
      case ')':
      case ']':
        while (!closings_.empty() && closings_.back() == '>') closings_.pop_back();
        if (closings_.empty() || closings_.back() != c) return false;
        closings_.pop_back();
        return true;
      default:
        return true;
    }
  }

 private:
  std::string closings_;
};

}  // namespace

bool TypeScanner::skip(char expected) {
  if (isAtEnd() || text_[position_] != expected) return false;
  ++position_;
  return true;
}

std::string_view TypeScanner::skipQualifiers() {
  const std::size_t begin = position_;
  while (!isAtEnd() && kTypeQualifiers.find(text_[position_]) != std::string_view::npos)
    ++position_;
  return text_.substr(begin, position_ - begin);
}

std::optional<std::uint64_t> TypeScanner::skipNumber() {
  std::uint64_t number = 0;
  const char* const end = text_.data() + text_.size();
  const auto read = std::from_chars(text_.data() + position_, end, number);
  if (read.ec != std::errc()) return std::nullopt;
  position_ = static_cast<std::size_t>(read.ptr - text_.data());
  return number;
}

bool TypeScanner::skipQuoted() {
  if (!skip('"')) return false;
  const std::size_t end = text_.find('"', position_);
  position_ = end == std::string_view::npos ? text_.size() : end + 1;
  return end != std::string_view::npos;
}

bool TypeScanner::skipName() {
  OpenBrackets open;
  for (; !isAtEnd(); ++position_) {
    const char c = text_[position_];
    if (open.areAllClosed() && (c == '=' || c == '}')) return true;
    // A name with unbalanced angle brackets ends at the aggregate's closing bracket.
    if (!open.meet(c)) return c == '}';
  }
  return false;
}

void TypeScanner::skipOffset() {
  if (next() == '+' || next() == '-') ++position_;
  while (isDigit(next())) ++position_;
}

/// Moves past the bracket that closes the one at the position.
bool TypeScanner::skipBracketed() {
  OpenBrackets open;
  while (!isAtEnd()) {
    if (text_[position_] == '"') {
      if (!skipQuoted()) return false;
      continue;
    }
    if (!open.meet(text_[position_])) return false;
    ++position_;
    if (open.areAllClosed()) return true;
  }
  return false;
}

/// Moves past the suffixes of "@": the mark of a block with its signature, or a class name.
bool TypeScanner::skipObject(Neighbour after) {
  if (skip('?')) return next() != '<' || skipBracketed();
  if (next() != '"') return true;
  const std::size_t begin = position_;
  if (!skipQuoted()) return false;
  const bool isClass = after == Neighbour::any || next() == '"' || next() == '}';
  if (!isClass) position_ = begin;
  return true;
}

bool TypeScanner::skipType(Neighbour after) {
  do {
    skipQualifiers();
  } while (skip('^'));
  const char c = next();
  if (c == '{' || c == '(' || c == '[') return skipBracketed();
  if (skip('@')) return skipObject(after);
  if (skip('b')) {
    while (isDigit(next())) ++position_;
    return true;
  }
  if (isAtEnd() || kScalars.find(c) == std::string_view::npos) return false;
  ++position_;
  return true;
}

}  // namespace tavlen
