#include "tavlen/introspection/types/JXTypeUnion.h"

#include "tavlen/introspection/types/JXTypeCursor.h"

namespace tavlen {

std::shared_ptr<JXTypeUnion> JXTypeUnion::initWithEncoding(JXTypeCursor& cursor,
                                                           JXTypeQualifiers qualifiers) {
  return std::make_shared<JXTypeUnion>(Key(), read(cursor, qualifiers, kEndDelimiter));
}

std::shared_ptr<JXTypeUnion> JXTypeUnion::initWithName(
    const std::optional<std::string>& name, std::optional<Types> types,
    const std::optional<std::vector<std::string>>& fieldNames) {
  return std::make_shared<JXTypeUnion>(Key(),
                                       build(kStartDelimiter, name, std::move(types), fieldNames));
}

}  // namespace tavlen
