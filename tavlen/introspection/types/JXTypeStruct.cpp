#include "tavlen/introspection/types/JXTypeStruct.h"

#include "tavlen/introspection/types/JXTypeCursor.h"

namespace tavlen {

std::shared_ptr<JXTypeStruct> JXTypeStruct::initWithEncoding(JXTypeCursor& cursor,
                                                             JXTypeQualifiers qualifiers) {
  return std::make_shared<JXTypeStruct>(Key(), read(cursor, qualifiers, kEndDelimiter));
}

std::shared_ptr<JXTypeStruct> JXTypeStruct::initWithName(
    const std::optional<std::string>& name, std::optional<Types> types,
    const std::optional<std::vector<std::string>>& fieldNames) {
  return std::make_shared<JXTypeStruct>(Key(),
                                        build(kStartDelimiter, name, std::move(types), fieldNames));
}

}  // namespace tavlen
