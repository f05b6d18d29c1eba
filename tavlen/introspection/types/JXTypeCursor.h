#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "tavlen/introspection/types/JXType.h"
#include "tavlen/introspection/types/JXTypeParse.h"
#include "tavlen/introspection/types/JXTypeQualifiers.h"
#include "tavlen/introspection/types/JXTypeText.h"

namespace tavlen {

/// A read position in the text of one or more encodings.
///
/// The text must live as long as the cursor; what is read from it need not: the first node that
/// needs the text makes a copy, which all nodes read with this cursor share.
class JXTypeCursor {
 public:
  explicit JXTypeCursor(std::string_view text) : text_(text) {}

  std::string_view text() const { return text_; }
  std::size_t position() const { return position_; }
  bool isAtEnd() const { return position_ == text_.size(); }
  /// The character at the position; 0 at the end, too.
  char character() const { return isAtEnd() ? '\0' : text_[position_]; }
  /// Whether `character` stands at the position; never at the end.
  bool isAt(char character) const { return !isAtEnd() && text_[position_] == character; }

  /// Passes one character, whatever it is. Does nothing at the end.
  void advance() { position_ += isAtEnd() ? 0 : 1; }
  /// A position beyond the end is the end.
  void moveTo(std::size_t position) { position_ = std::min(position, text_.size()); }

  /// The following is for the classes of the type family.

  /// Copies the text, unless that has been done. Views of text() are of the copy from then on.
  void keepText();
  /// What lies between `begin` and the position. The text is kept.
  JXTypeText textFrom(std::size_t begin) const;
  /// Leaves the text behind `end` out, until uncut() is given the length that it had.
  void cut(std::size_t end) { text_ = {text_.data(), end}; }
  void uncut(std::size_t length) { text_ = {text_.data(), length}; }
  JXTypeParse& parse() { return parse_; }

 private:
  std::string_view text_;
  std::size_t position_ = 0;
  std::shared_ptr<const std::string> kept_;
  JXTypeParse parse_;
};

/// Reads the type at the cursor with its qualifiers and moves the cursor behind it. Where no text
/// is left, a basic node with an empty encoding. Null for an empty text only.
///
/// Types are tried in the order basic, object, bit field, pointer, struct, union, array; the first
/// that supports the character reads it.
///
/// The encoding of the node, read again, gives the same tree, without the node's own qualifiers.
/// For that a type whose reading was decided by text that is not part of it in the end, which takes
/// a delimiter in a quoted name, is read as if that text were not there.
///
/// Beyond JXType::kMaximumDepth, and beyond the steps that JXTypeParse allows, a basic node of the
/// one character stands in place of a type that would hold others, and the reading goes on.
std::shared_ptr<JXType> JXTypeWithEncoding(JXTypeCursor& cursor);

/// The qualifiers that stand at the cursor, which is moved behind them.
JXTypeQualifiers JXRemoveQualifiers(JXTypeCursor& cursor);

}  // namespace tavlen
