#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/text/TextComparison.h"

namespace tavlen {

/// Sorts in the order of localizedCaseInsensitiveCompare() of the names, which `nameOf(value)`
/// returns; values of equal names by `isBefore(left, right)`, and otherwise as they were. Converts
/// each name once. Threads: any.
template <class Value, class NameOf, class IsBefore>
void sortByLocalizedName(std::vector<Value>& values, const NameOf& nameOf,
                         const IsBefore& isBefore) {
  struct Row {
    std::string key;
    Value* value;
  };
  std::vector<Row> rows;
  rows.reserve(values.size());
  for (Value& value : values) rows.push_back({localizedCaseInsensitiveKey(nameOf(value)), &value});
  std::stable_sort(rows.begin(), rows.end(), [&](const Row& left, const Row& right) {
    const int order = left.key.compare(right.key);
    return order == 0 ? isBefore(*left.value, *right.value) : order < 0;
  });
  std::vector<Value> sorted;
  sorted.reserve(values.size());
  for (const Row& row : rows) sorted.push_back(std::move(*row.value));
  values = std::move(sorted);
}

}  // namespace tavlen
