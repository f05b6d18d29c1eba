#pragma once

#include <string>
#include <vector>

#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

/// Appends the array literal of the parameters that `boxOf` gives for each of `items`.
template <class Item, class BoxOf>
void appendArrayLiteral(std::string& out, const std::vector<Item>& items, BoxOf boxOf) {
  out += "@[";
  bool first = true;
  for (const Item& item : items) {
    if (!first) out += ", ";
    first = false;
    const ParameterContainer& box = boxOf(item);
    if (std::holds_alternative<NilParameter>(box.value)) {
      out += "[NSNull null]";
    } else {
      appendOBJSValue(out, box.value);
    }
  }
  out += ']';
}

}  // namespace tavlen
