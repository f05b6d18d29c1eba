#include "tavlen/introspection/types/JXTypeComplex.h"

#include <algorithm>
#include <utility>

#include "tavlen/introspection/types/JXTypeCursor.h"
#include "tavlen/introspection/types/detail/JXTypeMembers.h"

namespace tavlen {

namespace {

/// Moves `cursor` to the first `=` or `end`, or else to the end of the text. Returns the name
/// before it, or a null view for an absent name.
std::string_view readName(JXTypeCursor& cursor, char end) {
  const std::string_view rest = cursor.text().substr(cursor.position());
  const auto* const found = std::find_if(rest.begin(), rest.end(), [end](char character) {
    return character == '=' || character == end;
  });
  const std::string_view name = JXType::stringBetweenStart(rest.data(), found);
  cursor.moveTo(cursor.position() + name.size());
  cursor.parse().count(cursor.position(), name.size() + 1);
  return name.empty() || name == "?" ? std::string_view() : name;
}

}  // namespace

JXTypeComplex::JXTypeComplex(Parts parts)
    : JXType(std::move(parts.encoding), parts.qualifiers,
             [&parts] {
               unsigned height = 1;
               if (parts.types == nullptr) return height;
               for (const auto& type : *parts.types) height = std::max(height, heightOver(type));
               return height;
             }()),
      name_(parts.name),
      types_(std::move(parts.types)),
      fieldNames_(std::move(parts.fieldNames)) {}

JXTypeComplex::Parts JXTypeComplex::read(JXTypeCursor& cursor, JXTypeQualifiers qualifiers,
                                         char end) {
  const std::size_t begin = cursor.position();
  const JXTypeParse::Level level(cursor.parse(), begin);
  cursor.keepText();
  cursor.advance();
  Parts parts;
  parts.qualifiers = qualifiers;
  parts.name = readName(cursor, end);
  if (cursor.isAt('=')) {
    cursor.advance();
    JXTypeMembers members(cursor);
    members.read(end);
    parts.types = members.types();
    parts.fieldNames = members.names();
  }
  // At the end delimiter, or at the end of the text.
  cursor.advance();
  parts.encoding = cursor.textFrom(begin);
  return parts;
}

JXTypeComplex::Parts JXTypeComplex::build(
    char start, const std::optional<std::string>& name, std::optional<Types> types,
    const std::optional<std::vector<std::string>>& fieldNames) {
  std::string text(1, start);
  text += name.value_or("?");
  if (types) {
    text += '=';
    for (std::size_t i = 0; i < types->size(); ++i) {
      (void)heightOver((*types)[i]);
      if (fieldNames && i < fieldNames->size()) text += '"' + (*fieldNames)[i] + '"';
      text += (*types)[i]->encoding();
    }
  }
  // The field names are stored after the encoding, which may lack some of them.
  const std::size_t length = text.size();
  for (const std::string& fieldName : fieldNames.value_or(std::vector<std::string>())) {
    text += fieldName;
  }
  Parts parts;
  const SharedText kept = text;
  parts.encoding = kept.piece(0, length);
  const char* bytes = kept.data();
  if (name) parts.name = {bytes + 1, name->size()};
  if (types) parts.types = std::make_unique<const Types>(*std::move(types));
  if (fieldNames) {
    auto names = std::make_unique<FieldNames>();
    bytes += length;
    for (const std::string& fieldName : *fieldNames) {
      names->emplace_back(bytes, fieldName.size());
      bytes += fieldName.size();
    }
    parts.fieldNames = std::move(names);
  }
  return parts;
}

std::optional<std::string_view> JXTypeComplex::name() const {
  return name_.data() != nullptr ? std::optional(name_) : std::nullopt;
}

void JXTypeComplex::appendOwnHead(std::string& out, bool padding, JXTypeBodies bodies) const {
  out += typeName();
  if (name()) {
    out += ' ';
    out += name_;
  }
  const bool isShown = bodies == JXTypeBodies::all || !name();
  if (isShown && types_ != nullptr && !types_->empty()) appendBody(out, bodies);
  if (padding) out += ' ';
}

void JXTypeComplex::appendBody(std::string& out, JXTypeBodies bodies) const {
  out += " { ";
  for (std::size_t i = 0; i < types_->size(); ++i) {
    const JXType& member = *(*types_)[i];
    member.appendHead(out, true, bodies);
    if (fieldNames_ != nullptr && i < fieldNames_->size()) {
      out += (*fieldNames_)[i];
    } else {
      out += "field" + std::to_string(i + 1);
    }
    member.appendTail(out);
    out += "; ";
  }
  out += '}';
}

bool JXTypeComplex::hasSameParts(const JXType& other) const {
  const auto& complex = static_cast<const JXTypeComplex&>(other);
  const auto areBothOrNone = [](const auto& left, const auto& right) {
    return (left == nullptr) == (right == nullptr);
  };
  if (name() != complex.name() || !areBothOrNone(types_, complex.types_) ||
      !areBothOrNone(fieldNames_, complex.fieldNames_)) {
    return false;
  }
  return (fieldNames_ == nullptr || *fieldNames_ == *complex.fieldNames_) &&
         (types_ == nullptr ||
          std::equal(types_->begin(), types_->end(), complex.types_->begin(), complex.types_->end(),
                     [](const std::shared_ptr<JXType>& left, const std::shared_ptr<JXType>& right) {
                       return areSame(*left, *right);
                     }));
}

}  // namespace tavlen
