#include "tavlen/introspection/JXTypeCursor.h"

#include <array>

#include "tavlen/introspection/JXTypeArray.h"
#include "tavlen/introspection/JXTypeBasic.h"
#include "tavlen/introspection/JXTypeBitField.h"
#include "tavlen/introspection/JXTypeID.h"
#include "tavlen/introspection/JXTypePointer.h"
#include "tavlen/introspection/JXTypeStruct.h"
#include "tavlen/introspection/JXTypeUnion.h"

namespace tavlen {

namespace {

using Initialiser = std::shared_ptr<JXType> (*)(JXTypeCursor&, JXTypeQualifiers);
using Initialisers = std::array<Initialiser, 256>;

template <class Type>
std::shared_ptr<JXType> initialise(JXTypeCursor& cursor, JXTypeQualifiers qualifiers) {
  return Type::initWithEncoding(cursor, qualifiers);
}

/// Lets `Type` have the characters that it supports and that no earlier one has.
template <class Type>
void enlist(Initialisers& initialisers) {
  for (std::size_t i = 0; i < initialisers.size(); ++i) {
    if (initialisers[i] == nullptr && Type::supportsEncoding(static_cast<char>(i))) {
      initialisers[i] = initialise<Type>;
    }
  }
}

template <class... Types>
Initialisers inOrder() {
  Initialisers initialisers{};
  (enlist<Types>(initialisers), ...);
  return initialisers;
}

Initialiser initialiserFor(char character) {
  static const Initialisers initialisers =
      inOrder<JXTypeBasic, JXTypeID, JXTypeBitField, JXTypePointer, JXTypeStruct, JXTypeUnion,
              JXTypeArray>();
  return initialisers[static_cast<unsigned char>(character)];
}

constexpr bool holdsOthers(char character) {
  return character == '{' || character == '(' || character == '[' || character == '^';
}

std::shared_ptr<JXType> typeWith(JXTypeCursor& cursor, JXTypeQualifiers qualifiers) {
  const char character = cursor.character();
  const std::size_t begin = cursor.position();
  JXTypeParse& parse = cursor.parse();
  if (holdsOthers(character) && (parse.depth == 0 || parse.hasRoom())) {
    return initialiserFor(character)(cursor, qualifiers);
  }
  const Initialiser initialiser = cursor.isAtEnd() || holdsOthers(character)
                                      ? initialise<JXTypeBasic>
                                      : initialiserFor(character);
  std::shared_ptr<JXType> type = initialiser(cursor, qualifiers);
  parse.count(cursor.position(), cursor.position() - begin);
  return type;
}

}  // namespace

void JXTypeCursor::keepText() {
  if (kept_ != nullptr) return;
  kept_ = std::make_shared<const std::string>(text_);
  text_ = *kept_;
}

JXTypeText JXTypeCursor::textFrom(std::size_t begin) const {
  return {std::shared_ptr<const char>(kept_, text_.data() + begin), position_ - begin};
}

std::shared_ptr<JXType> JXTypeWithEncoding(JXTypeCursor& cursor) {
  if (cursor.text().empty()) return nullptr;
  const std::size_t before = cursor.position();
  const JXTypeQualifiers qualifiers = JXRemoveQualifiers(cursor);
  const std::size_t begin = cursor.position();
  JXTypeParse& parse = cursor.parse();
  if (parse.depth > 0) {
    parse.count(begin, begin - before);
    return typeWith(cursor, qualifiers);
  }

  const std::size_t whole = cursor.text().size();
  parse.furthestTaken = 0;
  std::shared_ptr<JXType> type = typeWith(cursor, qualifiers);
  const std::size_t end = cursor.position();
  if (parse.furthestTaken < end || end == whole) return type;
  // Read up to there, the member that was taken back reaches the end of the text, with all that it
  // is part of. So nothing is taken back for what follows, and the whole of the text is read.
  cursor.cut(end);
  cursor.moveTo(begin);
  type = typeWith(cursor, qualifiers);
  cursor.uncut(whole);
  return type;
}

JXTypeQualifiers JXRemoveQualifiers(JXTypeCursor& cursor) {
  JXTypeQualifiers qualifiers = JXTypeQualifiers::none;
  for (; !cursor.isAtEnd(); cursor.advance()) {
    const JXTypeQualifiers qualifier = JXTypeQualifierForEncoding(cursor.character());
    if (qualifier == JXTypeQualifiers::none) break;
    qualifiers = qualifiers | qualifier;
  }
  return qualifiers;
}

}  // namespace tavlen
