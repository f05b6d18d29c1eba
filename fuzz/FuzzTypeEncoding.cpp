// Reading a type's encoding again yields the same tree, whatever text follows it, unless a quoted
// name contains a closing delimiter.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/Budget.h"
#include "tavlen/introspection/types/JXTypeAggregate.h"
#include "tavlen/introspection/types/JXTypeArray.h"
#include "tavlen/introspection/types/JXTypeCursor.h"
#include "tavlen/introspection/types/JXTypeID.h"
#include "tavlen/introspection/types/JXTypePointer.h"

namespace tavlen {
namespace {

bool isPlainName(std::string_view name) {
  return name.data()[-1] == '"' && name.data()[name.size()] == '"' &&
         name.find_first_of(")}") == name.npos;
}

/// Whether each quotation mark in the text of `type` delimits a name, and no name contains a
/// closing delimiter.
bool hasPlainNames(const JXType& type) {
  if (const auto* complex = dynamic_cast<const JXTypeComplex*>(&type)) {
    if (complex->name() && complex->name()->find('"') != std::string_view::npos) return false;
    const auto* const names = complex->fieldNames();
    const auto* const types = complex->types();
    return (names == nullptr || std::ranges::all_of(*names, isPlainName)) &&
           (types == nullptr ||
            std::ranges::all_of(*types, [](const auto& member) { return hasPlainNames(*member); }));
  }
  if (const auto* array = dynamic_cast<const JXTypeArray*>(&type)) {
    return array->encoding().ends_with(']') && hasPlainNames(*array->type());
  }
  if (const auto* pointer = dynamic_cast<const JXTypePointer*>(&type)) {
    return hasPlainNames(*pointer->type());
  }
  if (const auto* object = dynamic_cast<const JXTypeID*>(&type)) {
    const std::string_view text = object->encoding();
    return !text.starts_with("@\"") || isPlainName(text.substr(2, text.size() - 3));
  }
  return type.encoding() != "\"";
}

}  // namespace
}  // namespace tavlen

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  tavlen::fuzz::requireWithin({.bytesPerByte = 512}, size,
                              [&] { tavlen::JXTypeForEncoding(text); });
  tavlen::JXTypeCursor cursor(text);
  while (!cursor.isAtEnd()) {
    tavlen::JXRemoveQualifiers(cursor);
    const std::size_t begin = cursor.position();
    const auto type = tavlen::JXTypeWithEncoding(cursor);
    if (type == nullptr || text.substr(begin, cursor.position() - begin) != type->encoding()) {
      std::abort();
    }
    if (type->description().empty()) std::abort();
    if (type->encoding().empty()) break;
    if (!tavlen::hasPlainNames(*type)) continue;
    const auto again = tavlen::JXTypeForEncoding(type->encoding());
    if (!(*type == *again) || type->description() != again->description()) std::abort();
  }
  return 0;
}
