#include "tavlen/foundation/objc/MethodTypes.h"

#include "tavlen/foundation/objc/detail/TypeScanner.h"

namespace tavlen {

std::optional<MethodTypes> splitMethodTypes(std::string_view encoding) {
  MethodTypes types;
  TypeScanner scanner(encoding);
  const auto nextType = [&]() -> std::optional<std::string_view> {
    const std::size_t begin = scanner.position();
    if (!scanner.skipType()) return std::nullopt;
    const std::string_view type = encoding.substr(begin, scanner.position() - begin);
    scanner.skipOffset();
    return type;
  };
  const auto result = nextType();
  if (!result) return std::nullopt;
  types.result = *result;
  while (!scanner.isAtEnd()) {
    const auto argument = nextType();
    if (!argument) return std::nullopt;
    types.arguments.push_back(*argument);
  }
  return types;
}

std::optional<std::size_t> faultInType(std::string_view encoding) {
  TypeScanner scanner(encoding);
  return scanner.skipType() ? std::nullopt : std::optional(scanner.position());
}

}  // namespace tavlen
