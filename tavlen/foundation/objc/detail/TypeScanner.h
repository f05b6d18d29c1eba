#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tavlen {

/// The letters of const, in, inout, out, bycopy, byref, oneway, atomic and complex.
inline constexpr std::string_view kTypeQualifiers = "rnNoORVAj";

/// A position in an Objective-C type encoding that moves from piece to piece.
///
/// Pieces are found by their brackets, without recursion; the contents of aggregates and the
/// targets of pointers are not validated. The position never moves past the end. When a function
/// returns false, the text is malformed at the position, which is the end of an incomplete text.
class TypeScanner {
 public:
  explicit TypeScanner(std::string_view text) : text_(text) {}

  std::size_t position() const { return position_; }
  bool isAtEnd() const { return position_ == text_.size(); }
  /// The character at the position; NUL, which begins no type, at the end.
  char next() const { return isAtEnd() ? '\0' : text_[position_]; }

  /// Moves past `expected` if it is the next character; returns whether it was.
  bool skip(char expected);
  /// Moves past qualifiers (const, in, oneway, ...) and returns them, often none.
  std::string_view skipQualifiers();
  /// Moves past the decimal number at the position and returns it. Returns nothing when there is
  /// none or when it is too large.
  std::optional<std::uint64_t> skipNumber();
  /// Moves past a quoted text.
  bool skipQuoted();
  /// Moves past the name of an aggregate: from after its opening bracket up to the "=" or the
  /// closing bracket. A C++ name may contain either inside brackets.
  bool skipName();
  /// Moves past the decimal offset that follows each type in a method's encoding.
  void skipOffset();

  /// The text that may follow a type.
  enum class Neighbour { any, fieldName };
  /// Moves past a type with its qualifiers. With `fieldName`, inside an aggregate that names its
  /// fields, a quoted text after an object is usually the name of the next field and not the
  /// object's class.
  bool skipType(Neighbour after = Neighbour::any);

 private:
  bool skipBracketed();
  bool skipObject(Neighbour after);

  std::string_view text_;
  std::size_t position_ = 0;
};

}  // namespace tavlen
