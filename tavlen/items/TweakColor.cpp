#include "tavlen/items/TweakColor.h"

#include <algorithm>

namespace tavlen {

std::size_t index(TweakColor color) {
  const auto colors = allCases<TweakColor>();
  const auto place = std::find(colors.begin(), colors.end(), color);
  return place == colors.end() ? 0 : static_cast<std::size_t>(place - colors.begin());
}

}  // namespace tavlen
