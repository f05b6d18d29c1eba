#include "tavlen/foundation/text/TextPosition.h"

#include <algorithm>
#include <functional>

#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

TextPosition TextPosition::at(std::string_view text, std::size_t offset) {
  text = text.substr(0, offset);
  const auto count = [](std::string_view bytes, auto isCounted) {
    return static_cast<std::size_t>(std::count_if(bytes.begin(), bytes.end(), isCounted));
  };
  const std::string_view line = text.substr(text.rfind('\n') + 1);  // npos + 1 is 0
  return {1 + count(text, [](char byte) { return byte == '\n'; }),
          1 + count(line, std::not_fn(isUTF8Continuation))};
}

std::string description(TextPosition position) {
  return std::to_string(position.line) + ":" + std::to_string(position.column);
}

}  // namespace tavlen
