#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A place in a text that people edit. A plain value.
struct TAVLEN_API TextPosition {
  /// From 1.
  std::size_t line = 1;
  /// From 1; in code points, but for scripts (see TextLines.h).
  std::size_t column = 1;

  /// The position of the byte at `offset` in `text`, which is UTF-8. Reads all that precedes it.
  static TextPosition at(std::string_view text, std::size_t offset);

  bool operator==(const TextPosition&) const = default;
};

/// "12:9", as compilers write it.
TAVLEN_API std::string description(TextPosition position);

}  // namespace tavlen
