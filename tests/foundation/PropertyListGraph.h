#pragma once

#include <bit>
#include <set>
#include <utility>
#include <vector>

#include "tavlen/foundation/PropertyList.h"

namespace tavlen {

/// Whether both lists unfold to the same, perhaps endless, tree. Reals are compared by their bits.
inline bool sameGraph(const PropertyList& a, const PropertyList& b) {
  using Index = PropertyList::Index;
  std::set<std::pair<Index, Index>> seen;
  std::vector<std::pair<Index, Index>> pending{{a.root(), b.root()}};
  const auto bits = [](double value) { return std::bit_cast<std::uint64_t>(value); };
  while (!pending.empty()) {
    const auto [i, j] = pending.back();
    pending.pop_back();
    if (!seen.insert({i, j}).second) continue;
    if (a.kind(i) != b.kind(j)) return false;
    if (const auto* array = a.get<PropertyList::Array>(i)) {
      const auto& other = *b.get<PropertyList::Array>(j);
      if (array->elements.size() != other.elements.size()) return false;
      for (std::size_t k = 0; k < other.elements.size(); ++k) {
        pending.emplace_back(array->elements[k], other.elements[k]);
      }
    } else if (const auto* dictionary = a.get<PropertyList::Dictionary>(i)) {
      const auto& other = *b.get<PropertyList::Dictionary>(j);
      if (dictionary->members.size() != other.members.size()) return false;
      for (std::size_t k = 0; k < other.members.size(); ++k) {
        pending.emplace_back(dictionary->members[k].key, other.members[k].key);
        pending.emplace_back(dictionary->members[k].value, other.members[k].value);
      }
    } else if (const auto* real = a.get<double>(i)) {
      if (bits(*real) != bits(*b.get<double>(j))) return false;
    } else if (const auto* date = a.get<Date>(i)) {
      if (bits(date->secondsSinceReferenceDate) !=
          bits(b.get<Date>(j)->secondsSinceReferenceDate)) {
        return false;
      }
    } else if (a.node(i) != b.node(j)) {
      return false;
    }
  }
  return true;
}

}  // namespace tavlen
