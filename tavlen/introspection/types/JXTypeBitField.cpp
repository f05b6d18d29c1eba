#include "tavlen/introspection/types/JXTypeBitField.h"

#include "tavlen/introspection/types/JXTypeCursor.h"

namespace tavlen {

std::shared_ptr<JXTypeBitField> JXTypeBitField::initWithEncoding(JXTypeCursor& cursor,
                                                                 JXTypeQualifiers qualifiers) {
  cursor.keepText();
  const std::size_t begin = cursor.position();
  cursor.advance();
  const std::uint64_t bits = numberFromEncoding(cursor);
  return std::make_shared<JXTypeBitField>(Key(), cursor.textFrom(begin), qualifiers, bits);
}

std::shared_ptr<JXTypeBitField> JXTypeBitField::initWithBits(std::uint64_t bits) {
  return std::make_shared<JXTypeBitField>(Key(), SharedText("b" + std::to_string(bits)),
                                          JXTypeQualifiers::none, bits);
}

void JXTypeBitField::appendOwnHead(std::string& out, bool padding, JXTypeBodies /*bodies*/) const {
  out += padding ? "unsigned int " : "unsigned int";
}

void JXTypeBitField::appendOwnTail(std::string& out) const { out += ":" + std::to_string(bits_); }

bool JXTypeBitField::hasSameParts(const JXType& other) const {
  return bits_ == static_cast<const JXTypeBitField&>(other).bits_;
}

}  // namespace tavlen
