#include "tavlen/introspection/types/JXTypePointer.h"

#include <utility>

#include "tavlen/introspection/types/JXTypeBasic.h"
#include "tavlen/introspection/types/JXTypeCursor.h"

namespace tavlen {

namespace {

bool isCharacter(const JXType& type) {
  const auto* basic = dynamic_cast<const JXTypeBasic*>(&type);
  return basic != nullptr && basic->primitiveType() == JXPrimitiveType::char_;
}

}  // namespace

JXTypePointer::JXTypePointer(Key /*key*/, const SharedText& encoding, JXTypeQualifiers qualifiers,
                             std::shared_ptr<JXType> type, bool isFunction)
    : JXType(encoding, qualifiers, heightOf(encoding, type), isFunction), type_(std::move(type)) {}

/// `*` has the height 0: it is parsed in one step and is not a container.
unsigned JXTypePointer::heightOf(const SharedText& encoding, const std::shared_ptr<JXType>& type) {
  return encoding.size() == 1 && isCharacter(*type) ? 0 : heightOver(type);
}

std::shared_ptr<JXTypePointer> JXTypePointer::toCharacter(JXTypeQualifiers qualifiers) {
  static const auto* text = new SharedText(SharedText::lasting("*"));
  static const auto* character =
      new std::shared_ptr<JXType>(JXTypeBasic::initWithPrimitiveType(JXPrimitiveType::char_));
  if (qualifiers != JXTypeQualifiers::none) {
    return std::make_shared<JXTypePointer>(Key(), *text, qualifiers, *character, false);
  }
  // As frequent as basic types, so there is one static node.
  static auto* plain = new JXTypePointer(Key(), *text, qualifiers, *character, false);
  return {std::shared_ptr<void>(), plain};
}

std::shared_ptr<JXTypePointer> JXTypePointer::initWithEncoding(JXTypeCursor& cursor,
                                                               JXTypeQualifiers qualifiers) {
  const std::size_t begin = cursor.position();
  if (cursor.isAt('*')) {
    cursor.advance();
    return toCharacter(qualifiers);
  }
  const JXTypeParse::Level level(cursor.parse(), begin);
  cursor.keepText();
  cursor.advance();
  cursor.parse().count(cursor.position(), 1);
  const bool isFunction = cursor.isAt('?');
  std::shared_ptr<JXType> type = JXTypeWithEncoding(cursor);
  return std::make_shared<JXTypePointer>(Key(), cursor.textFrom(begin), qualifiers, std::move(type),
                                         isFunction);
}

std::shared_ptr<JXTypePointer> JXTypePointer::initWithType(std::shared_ptr<JXType> type,
                                                           bool isFunction) {
  (void)heightOver(type);
  std::string encoding = "*";
  if (!isCharacter(*type)) {
    encoding = isFunction ? "^?" : "^";
    encoding += type->encoding();
  }
  return std::make_shared<JXTypePointer>(Key(), SharedText(encoding), JXTypeQualifiers::none,
                                         std::move(type), isFunction);
}

void JXTypePointer::appendOwnHead(std::string& out, bool /*padding*/, JXTypeBodies bodies) const {
  if (isFunction()) {
    out += "void (*";
    return;
  }
  type_->appendHead(out, true, bodies);
  out += '*';
}

void JXTypePointer::appendOwnTail(std::string& out) const {
  if (isFunction()) {
    out += ")(void)";
  } else {
    type_->appendTail(out);
  }
}

bool JXTypePointer::hasSameParts(const JXType& other) const {
  return areSame(*type_, *static_cast<const JXTypePointer&>(other).type_);
}

}  // namespace tavlen
