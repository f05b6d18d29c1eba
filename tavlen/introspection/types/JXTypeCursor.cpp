#include "tavlen/introspection/types/JXTypeCursor.h"

#include <array>
#include <mutex>

#include "tavlen/introspection/types/JXTypeAggregate.h"
#include "tavlen/introspection/types/JXTypeArray.h"
#include "tavlen/introspection/types/JXTypeBasic.h"
#include "tavlen/introspection/types/JXTypeBitField.h"
#include "tavlen/introspection/types/JXTypeID.h"
#include "tavlen/introspection/types/JXTypeIDIgnoreName.h"
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

/// RAII: hides the text after the cursor.
class CutText {
 public:
  explicit CutText(JXTypeCursor& cursor) : cursor_(cursor), length_(cursor.text().size()) {
    cursor.cut(cursor.position());
  }
  CutText(const CutText&) = delete;
  CutText& operator=(const CutText&) = delete;
  ~CutText() { cursor_.uncut(length_); }

 private:
  JXTypeCursor& cursor_;
  std::size_t length_;
};

bool ignoresNames() {
  const std::lock_guard lock(JXTypeIDIgnoreNameLock);
  return JXTypeIDIgnoreName;
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
  JXTypeParse& parse = cursor.parse();
  if (parse.depth > 0) {
    parse.count(begin, begin - before);
    return typeWith(cursor, qualifiers);
  }

  parse.furthestTaken = 0;
  // Saved for the second parse below: the first may clear the flag. Types other than containers are
  // parsed only once.
  const bool wereIgnored = JXTypeParse::holdsOthers(cursor.character()) && ignoresNames();
  std::shared_ptr<JXType> type = typeWith(cursor, qualifiers);
  if (parse.furthestTaken < cursor.position() || cursor.isAtEnd()) return type;
  // A retracted reading reached beyond the type's end, so the text after it has decided how the
  // type is parsed. Parse again with the text cut off there: then no reading can depend on it, and
  // the type still takes the whole of the cut text, because the retracted member and everything
  // around it extend to its end.
  const CutText cut(cursor);
  cursor.moveTo(begin);
  if (wereIgnored) {
    const std::lock_guard lock(JXTypeIDIgnoreNameLock);
    JXTypeIDIgnoreName = true;
  }
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
