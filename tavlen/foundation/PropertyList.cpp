#include "tavlen/foundation/PropertyList.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace tavlen {

std::size_t PropertyList::referenceCount() const {
  std::size_t count = 0;
  for (const Node& node : nodes_) {
    if (const auto* array = std::get_if<Array>(&node)) {
      count += array->elements.size();
    } else if (const auto* dictionary = std::get_if<Dictionary>(&node)) {
      count += 2 * dictionary->members.size();
    }
  }
  return count;
}

std::optional<PropertyList::Index> PropertyList::find(Index index, std::string_view key) const {
  const auto* dictionary = get<Dictionary>(index);
  if (dictionary == nullptr) return std::nullopt;
  const auto& members = dictionary->members;
  const auto found = std::find_if(members.rbegin(), members.rend(),
                                  [&](const Member& member) { return string(member.key) == key; });
  if (found == members.rend()) return std::nullopt;
  return found->value;
}

std::optional<std::int64_t> PropertyList::integer(Index index) const {
  if (const auto* value = get<std::int64_t>(index)) return *value;
  const auto* value = get<std::uint64_t>(index);
  if (value == nullptr || *value > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(*value);
}

PropertyList::Index PropertyList::add(Node node) {
  if (nodes_.size() >= std::numeric_limits<Index>::max()) {
    throw std::length_error("property list: too many objects");
  }
  nodes_.push_back(std::move(node));
  return static_cast<Index>(nodes_.size() - 1);
}

std::string_view description(PropertyList::Kind kind) {
  constexpr std::array<std::string_view, std::variant_size_v<PropertyList::Node>> kTexts = {
      "a boolean", "an integer", "an integer", "a real number", "a date",
      "data",      "a string",   "a UID",      "an array",      "a dictionary"};
  return kTexts[static_cast<std::size_t>(kind)];
}

DecodingError invalidPropertyList(std::string_view reason) {
  return DecodingError::dataCorrupted("The given data was not a valid property list. " +
                                      std::string(reason));
}

}  // namespace tavlen
