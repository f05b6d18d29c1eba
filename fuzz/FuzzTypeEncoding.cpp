// Reading a type's encoding again yields the same tree, whatever text follows it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/Budget.h"
#include "tavlen/introspection/types/JXTypeCursor.h"

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
    const auto again = tavlen::JXTypeForEncoding(type->encoding());
    if (!(*type == *again) || type->description() != again->description()) std::abort();
  }
  return 0;
}
