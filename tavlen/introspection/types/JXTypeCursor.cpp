#include "tavlen/introspection/types/JXTypeCursor.h"

#include <array>

#include "tavlen/introspection/types/JXTypeAggregate.h"
#include "tavlen/introspection/types/JXTypeArray.h"
#include "tavlen/introspection/types/JXTypeBasic.h"
#include "tavlen/introspection/types/JXTypeBitField.h"
#include "tavlen/introspection/types/JXTypeID.h"
#include "tavlen/introspection/types/JXTypePointer.h"

namespace tavlen {

namespace {

using Initialiser = std::shared_ptr<JXType> (*)(JXTypeCursor&, JXTypeQualifiers);
using Initialisers = std::array<Initialiser, 256>;

template <class Type>
std::shared_ptr<JXType> initialise(JXTypeCursor& cursor, JXTypeQualifiers qualifiers) {
  return Type::initWithEncoding(cursor, qualifiers);
}

/// Registers `Type` for the characters that it supports and that no earlier type has.
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

std::shared_ptr<JXType> typeWith(JXTypeCursor& cursor, JXTypeQualifiers qualifiers) {
  const char character = cursor.character();
  const std::size_t begin = cursor.position();
  JXTypeParse& parse = cursor.parse();
  const bool holdsOthers = JXTypeParse::holdsOthers(character);
  if (holdsOthers && (parse.depth == 0 || parse.hasRoom())) {
    return initialiserFor(character)(cursor, qualifiers);
  }
  const Initialiser initialiser =
      cursor.isAtEnd() || holdsOthers ? initialise<JXTypeBasic> : initialiserFor(character);
  std::shared_ptr<JXType> type = initialiser(cursor, qualifiers);
  parse.count(cursor.position(), cursor.position() - begin);
  return type;
}

}  // namespace

void JXTypeCursor::keepText() {
  if (!kept_.empty()) return;
  kept_ = text_;
  text_ = kept_;
}

SharedText JXTypeCursor::textFrom(std::size_t begin) const {
  return kept_.piece(begin, position_ - begin);
}

std::shared_ptr<JXType> JXTypeWithEncoding(JXTypeCursor& cursor) {
  if (cursor.text().empty()) return nullptr;
  const std::size_t before = cursor.position();
  const JXTypeQualifiers qualifiers = JXRemoveQualifiers(cursor);
  const std::size_t begin = cursor.position();
  if (cursor.parse().depth > 0) cursor.parse().count(begin, begin - before);
  return typeWith(cursor, qualifiers);
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
