#include "cli/classes/TypeTree.h"

#include <string_view>

#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/introspection/types/JXTypeArray.h"
#include "tavlen/introspection/types/JXTypeBitField.h"
#include "tavlen/introspection/types/JXTypeComplex.h"
#include "tavlen/introspection/types/JXTypeID.h"
#include "tavlen/introspection/types/JXTypePointer.h"

namespace tavlen::cli {

namespace {

class TreeEncoder {
 public:
  explicit TreeEncoder(Encoder& encoder) : encoder_(encoder) {}

  void root(const JXType& type) {
    encoder_.beginRecord();
    encoding(type);
    text("declaration", type.description());
    properties(type);
    encoder_.endRecord();
  }

 private:
  void node(const JXType& type, bool hasParts) {
    encoder_.beginRecord();
    if (!hasParts) encoding(type);
    properties(type);
    encoder_.endRecord();
  }

  void part(std::string_view key, const JXType& type) {
    encoder_.key(key);
    part(type);
  }
  void part(const JXType& type) {
    node(type, dynamic_cast<const JXTypePointer*>(&type) != nullptr ||
                   dynamic_cast<const JXTypeArray*>(&type) != nullptr ||
                   dynamic_cast<const JXTypeComplex*>(&type) != nullptr);
  }

  void encoding(const JXType& type) { text("encoding", type.encoding()); }

  void properties(const JXType& type) {
    qualifiers(type);
    if (const auto* object = dynamic_cast<const JXTypeID*>(&type)) {
      properties(*object);
    } else if (const auto* bitField = dynamic_cast<const JXTypeBitField*>(&type)) {
      text("kind", "bitField");
      number("bits", bitField->bits());
    } else if (const auto* pointer = dynamic_cast<const JXTypePointer*>(&type)) {
      text("kind", "pointer");
      flag("isFunction", pointer->isFunction());
      part("type", *pointer->type());
    } else if (const auto* array = dynamic_cast<const JXTypeArray*>(&type)) {
      text("kind", "array");
      number("count", array->count());
      part("type", *array->type());
    } else if (const auto* aggregate = dynamic_cast<const JXTypeComplex*>(&type)) {
      properties(*aggregate);
    } else {
      text("kind", "basic");
      text("name", type._descriptionWithPadding(false).head);
    }
  }

  void properties(const JXTypeID& object) {
    text("kind", "object");
    if (object.name()) text("name", *object.name());
    if (object.protocols() != nullptr) texts("protocols", *object.protocols());
    flag("isBlock", object.isBlock());
  }

  void properties(const JXTypeComplex& aggregate) {
    text("kind", aggregate.typeName());
    if (aggregate.name()) text("name", *aggregate.name());
    if (aggregate.fieldNames() != nullptr) texts("fieldNames", *aggregate.fieldNames());
    if (aggregate.types() == nullptr) return;
    encoder_.key("types");
    encoder_.beginArray(aggregate.types()->size());
    for (const auto& type : *aggregate.types()) part(*type);
    encoder_.endArray();
  }

  void qualifiers(const JXType& type) {
    if (const auto words = JXStringForTypeQualifiers(type.qualifiers())) text("qualifiers", *words);
  }

  void text(std::string_view key, std::string_view value) {
    encoder_.key(key);
    encoder_.string(wellFormedUTF8(value));
  }
  void texts(std::string_view key, const std::vector<std::string_view>& values) {
    encoder_.key(key);
    encoder_.beginArray(values.size());
    for (const std::string_view value : values) encoder_.string(wellFormedUTF8(value));
    encoder_.endArray();
  }
  void number(std::string_view key, std::uint64_t value) {
    encoder_.key(key);
    encoder_.unsignedInteger(value);
  }
  void flag(std::string_view key, bool value) {
    encoder_.key(key);
    encoder_.boolean(value);
  }

  Encoder& encoder_;
};

}  // namespace

void encodeTypeTree(Encoder& encoder, const JXType* root) {
  if (root == nullptr) {
    encoder.null();
  } else {
    TreeEncoder(encoder).root(*root);
  }
}

}  // namespace tavlen::cli
