#pragma once

#include <set>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

using Indices = std::vector<PropertyList::Index>;
using Members = std::vector<PropertyList::Member>;

/// Whether both lists unfold to the same, perhaps endless, tree. Reals are compared by their bits.
inline bool sameGraph(const PropertyList& a, const PropertyList& b) {
  using Index = PropertyList::Index;
  std::set<std::pair<Index, Index>> seen;
  std::vector<std::pair<Index, Index>> pending{{a.root(), b.root()}};
  while (!pending.empty()) {
    const auto [i, j] = pending.back();
    pending.pop_back();
    if (!seen.insert({i, j}).second) continue;
    if (a.kind(i) != b.kind(j)) return false;
    if (const auto array = a.get<PropertyList::Array>(i)) {
      const auto other = *b.get<PropertyList::Array>(j);
      if (array->elements.size() != other.elements.size()) return false;
      for (std::size_t k = 0; k < other.elements.size(); ++k) {
        pending.emplace_back(array->elements[k], other.elements[k]);
      }
    } else if (const auto dictionary = a.get<PropertyList::Dictionary>(i)) {
      const auto other = *b.get<PropertyList::Dictionary>(j);
      if (dictionary->members.size() != other.members.size()) return false;
      for (std::size_t k = 0; k < other.members.size(); ++k) {
        pending.emplace_back(dictionary->members[k].key, other.members[k].key);
        pending.emplace_back(dictionary->members[k].value, other.members[k].value);
      }
    } else if (a.scalar(i) != b.scalar(j)) {
      return false;
    }
  }
  return true;
}

}  // namespace tavlen
