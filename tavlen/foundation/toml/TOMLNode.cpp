#include "tavlen/foundation/toml/TOMLNode.h"

#include <array>

namespace tavlen {

const char* TOMLNode::kind() const {
  constexpr std::array<const char*, std::variant_size_v<Value>> kKinds = {
      "a string", "an integer", "a real number", "a Boolean", "a date", "an array", "a table"};
  return kKinds[value.index()];
}

}  // namespace tavlen
