#include "tavlen/introspection/types/JXType.h"

#include <stdexcept>
#include <typeinfo>
#include <utility>

#include "tavlen/foundation/text/Characters.h"
#include "tavlen/introspection/types/JXTypeBasic.h"
#include "tavlen/introspection/types/JXTypeCursor.h"

namespace tavlen {

namespace {

constexpr std::uint64_t kKnownQualifiers = (1 << 9) - 1;

}  // namespace

JXType::JXType(SharedText encoding, JXTypeQualifiers qualifiers, unsigned height, bool isMarked)
    : length_(encoding.size() & ((std::uint64_t{1} << 44) - 1)),
      qualifiers_(static_cast<std::uint64_t>(qualifiers) & kKnownQualifiers),
      height_(height & 0xFF),
      isMarked_(isMarked),
      encoding_(std::move(encoding).release()) {
  static_assert(kMaximumDepth <= 0xFF);
}

JXTypeDescription JXType::descriptionWithPadding(bool padding) const {
  JXTypeDescription description;
  appendHead(description.head, padding);
  appendTail(description.tail);
  return description;
}

JXTypeDescription JXType::_descriptionWithPadding(bool padding) const {
  JXTypeDescription description;
  appendOwnHead(description.head, padding, JXTypeBodies::all);
  appendOwnTail(description.tail);
  return description;
}

std::string JXType::description(JXTypeBodies bodies) const {
  std::string text;
  appendHead(text, false, bodies);
  appendTail(text);
  return text;
}

void JXType::appendHead(std::string& out, bool padding, JXTypeBodies bodies) const {
  if (qualifiers_ != 0) {
    out += *JXStringForTypeQualifiers(qualifiers());
    out += ' ';
  }
  appendOwnHead(out, padding, bodies);
}

std::string_view JXType::stringBetweenStart(const char* start, const char* end) {
  return {start, static_cast<std::size_t>(end - start)};
}

std::uint64_t JXType::numberFromEncoding(JXTypeCursor& cursor) {
  std::uint64_t number = 0;
  for (; !cursor.isAtEnd(); cursor.advance()) {
    const char character = cursor.character();
    if (!isDigit(character)) break;
    number = number * 10 + static_cast<std::uint64_t>(character - '0');
  }
  return number;
}

bool JXType::operator==(const JXType& other) const {
  return encoding() == other.encoding() && areSame(*this, other);
}

bool JXType::areSame(const JXType& left, const JXType& right) {
  if (&left == &right) return true;
  // The encoding of a container covers its parts and its own properties.
  return left.length_ == right.length_ && left.qualifiers_ == right.qualifiers_ &&
         left.isMarked_ == right.isMarked_ && typeid(left) == typeid(right) &&
         (left.height_ > 0 || left.encoding() == right.encoding()) && left.hasSameParts(right);
}

unsigned JXType::heightOver(const std::shared_ptr<JXType>& part) {
  if (part == nullptr) throw std::invalid_argument("null component type");
  if (part->height() >= kMaximumDepth)
    throw std::length_error("type nested deeper than 250 levels");
  return part->height() + 1;
}

std::shared_ptr<JXType> JXTypeForEncoding(std::string_view encoding) {
  JXTypeCursor cursor(encoding);
  return JXTypeWithEncoding(cursor);
}

std::shared_ptr<JXType> JXTypeVoid() {
  JXTypeCursor cursor("v");
  return JXTypeBasic::initWithEncoding(cursor, JXTypeQualifiers::none);
}

}  // namespace tavlen
