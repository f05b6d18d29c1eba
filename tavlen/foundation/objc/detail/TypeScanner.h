#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tavlen {

/// The letters of const, in, inout, out, bycopy, byref, oneway, atomic and complex.
inline constexpr std::string_view kTypeQualifiers = "rnNoORVAj";

/// A position in an Objective-C type encoding that moves over its pieces.
///
/// The pieces are found by their brackets, without recursion: what stands inside an aggregate or
/// behind a pointer is not judged. Never past the end; where a function says no, the text is
/// malformed and the position is anywhere.
class TypeScanner {
 public:
  explicit TypeScanner(std::string_view text) : text_(text) {}

  std::size_t position() const { return position_; }
  bool isAtEnd() const { return position_ == text_.size(); }
  /// The character at the position; a NUL at the end, which begins no type.
  char next() const { return isAtEnd() ? '\0' : text_[position_]; }

  /// Moves over `expected` where it is the next character.
  bool skip(char expected);
  /// Moves over the qualifiers (const, in, oneway, ...) and gives them; often none.
  std::string_view skipQualifiers();
  /// The decimal number at the position. Nothing when there is none or when it is too large.
  std::optional<std::uint64_t> skipNumber();
  /// Moves over a text in quotation marks.
  bool skipQuoted();
  /// Moves over an aggregate's name, from behind its opening bracket to "=" or to the closing
  /// bracket. A name of C++ may hold either inside brackets of its own.
  bool skipName();
  /// Moves over the decimal offset that a method's encoding gives behind each type.
  void skipOffset();

  /// What may follow a type.
  enum class Neighbour { any, fieldName };
  /// Moves over a type with its qualifiers. Inside an aggregate that names its fields, a quoted
  /// text behind an object is mostly not its class but the next field's name.
  bool skipType(Neighbour after = Neighbour::any);

 private:
  bool skipBracketed();
  bool skipObject(Neighbour after);

  std::string_view text_;
  std::size_t position_ = 0;
};

}  // namespace tavlen
