#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/text/SharedText.h"
#include "tavlen/introspection/types/JXType.h"
#include "tavlen/introspection/types/JXTypeParse.h"
#include "tavlen/introspection/types/JXTypeQualifiers.h"

namespace tavlen {

/// A read position in the text of one or more encodings.
///
/// The text must live as long as the cursor, but not as long as the nodes: the first node that
/// needs the text copies it, and all nodes parsed with this cursor share the copy.
class TAVLEN_API JXTypeCursor {
 public:
  /// A cursor at the beginning of `text`.
  explicit JXTypeCursor(std::string_view text) : text_(text) {}

  /// The text.
  std::string_view text() const { return text_; }
  /// The offset in the text, in bytes.
  std::size_t position() const { return position_; }
  /// Whether the position is the end of the text.
  bool isAtEnd() const { return position_ == text_.size(); }
  /// The character at the position; 0 at the end.
  char character() const { return isAtEnd() ? '\0' : text_[position_]; }
  /// Whether `character` is at the position; false at the end.
  bool isAt(char character) const { return !isAtEnd() && text_[position_] == character; }

  /// Moves past one character, whatever it is. A no-op at the end.
  void advance() { position_ += isAtEnd() ? 0 : 1; }
  /// Moves to `position`, or to the end if that is before it.
  void moveTo(std::size_t position) { position_ = std::min(position, text_.size()); }

  /// Copies the text unless it is already copied; text() then refers to the copy. This and the
  /// following functions are only for the type classes.
  void keepText();
  /// The text between `begin` and the position. keepText() must have been called.
  SharedText textFrom(std::size_t begin) const;
  /// The state of the parse.
  JXTypeParse& parse() { return parse_; }

 private:
  std::string_view text_;
  std::size_t position_ = 0;
  SharedText kept_;
  JXTypeParse parse_;
};

/// Parses the type at the cursor with its qualifiers and moves the cursor past it. At the end of a
/// text it returns a basic node with an empty encoding. Null only for an empty text.
///
/// Types are tried in the order basic, object, bit field, pointer, struct, union, array; the first
/// one that supports the character parses it.
///
/// Re-parsing a node's encoding() yields an equal tree (minus its qualifiers), unless a quoted name
/// contains a closing delimiter. Then the text after the node may have decided how it was parsed:
/// see JXTypeMembers.
///
/// Past the depth or step limit, a container is replaced by a basic node for its opening character
/// and parsing continues after that character.
TAVLEN_API std::shared_ptr<JXType> JXTypeWithEncoding(JXTypeCursor& cursor);

/// Parses the qualifiers at the cursor and moves the cursor past them.
TAVLEN_API JXTypeQualifiers JXRemoveQualifiers(JXTypeCursor& cursor);

}  // namespace tavlen
