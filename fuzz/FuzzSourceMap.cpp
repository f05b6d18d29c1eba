// A map that is read leads every place in the code to a place in its source, or to none.
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "fuzz/Budget.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/tweaks/SourceMap.h"

using namespace tavlen;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view json(reinterpret_cast<const char*>(data), size);
  std::optional<SourceMap> map;
  try {
    fuzz::requireWithin({}, size, [&] { map = SourceMap::decoded(json); });
  } catch (const DecodingError&) {
    return 0;
  }
  for (const std::size_t line : {1U, 2U, 1000U}) {
    for (const std::size_t column : {1U, 10U, ~0U}) {
      const auto place = map->sourceOf({line, column});
      if (place && (place->line == 0 || place->column == 0)) std::abort();
    }
  }
  return 0;
}
