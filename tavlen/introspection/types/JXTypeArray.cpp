#include "tavlen/introspection/types/JXTypeArray.h"

#include <utility>

#include "tavlen/introspection/types/JXTypeCursor.h"

namespace tavlen {

JXTypeArray::JXTypeArray(Key /*key*/, SharedText encoding, JXTypeQualifiers qualifiers,
                         std::uint64_t count, std::shared_ptr<JXType> type)
    : JXType(std::move(encoding), qualifiers, heightOver(type)),
      count_(count),
      type_(std::move(type)) {}

std::shared_ptr<JXTypeArray> JXTypeArray::initWithEncoding(JXTypeCursor& cursor,
                                                           JXTypeQualifiers qualifiers) {
  const std::size_t begin = cursor.position();
  const JXTypeParse::Level level(cursor.parse(), begin);
  cursor.keepText();
  cursor.advance();
  const std::uint64_t count = numberFromEncoding(cursor);
  cursor.parse().count(cursor.position(), cursor.position() - begin);
  std::shared_ptr<JXType> type = JXTypeWithEncoding(cursor);
  cursor.advance();
  return std::make_shared<JXTypeArray>(Key(), cursor.textFrom(begin), qualifiers, count,
                                       std::move(type));
}

std::shared_ptr<JXTypeArray> JXTypeArray::initWithCount(std::uint64_t count,
                                                        std::shared_ptr<JXType> type) {
  (void)heightOver(type);
  std::string encoding = "[" + std::to_string(count);
  encoding += type->encoding();
  encoding += ']';
  return std::make_shared<JXTypeArray>(Key(), SharedText(encoding), JXTypeQualifiers::none, count,
                                       std::move(type));
}

void JXTypeArray::appendOwnHead(std::string& out, bool padding, JXTypeBodies bodies) const {
  type_->appendHead(out, padding, bodies);
}

void JXTypeArray::appendOwnTail(std::string& out) const {
  out += "[" + std::to_string(count_) + "]";
  type_->appendTail(out);
}

bool JXTypeArray::hasSameParts(const JXType& other) const {
  const auto& array = static_cast<const JXTypeArray&>(other);
  return count_ == array.count_ && areSame(*type_, *array.type_);
}

}  // namespace tavlen
