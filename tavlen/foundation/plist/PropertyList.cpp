#include "tavlen/foundation/plist/PropertyList.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <stdexcept>
#include <type_traits>

namespace tavlen {

namespace {

std::uint64_t bitsOf(bool value) { return value ? 1 : 0; }
std::uint64_t bitsOf(std::int64_t value) { return static_cast<std::uint64_t>(value); }
std::uint64_t bitsOf(std::uint64_t value) { return value; }
std::uint64_t bitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }
std::uint64_t bitsOf(Date value) { return bitsOf(value.secondsSinceReferenceDate); }
std::uint64_t bitsOf(PropertyList::UID value) { return value.value; }

/// Appends the parts of an object to the common store; returns the offset of the first.
template <class Store, class Parts>
std::uint64_t append(Store& store, const Parts& parts) {
  if (parts.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("property list: an object is too large");
  }
  const std::size_t begin = store.size();
  store.insert(store.end(), parts.begin(), parts.end());
  return begin;
}

}  // namespace

PropertyList::Node PropertyList::node(Index index) const {
  const Object& object = objects_[index];
  switch (object.kind) {
    case Kind::boolean:
      return object.bits != 0;
    case Kind::integer:
      return static_cast<std::int64_t>(object.bits);
    case Kind::unsignedInteger:
      return object.bits;
    case Kind::real:
      return std::bit_cast<double>(object.bits);
    case Kind::date:
      return Date{std::bit_cast<double>(object.bits)};
    case Kind::data:
      return Data{bytes(object)};
    case Kind::string:
      return bytes(object);
    case Kind::uid:
      return UID{object.bits};
    case Kind::array:
      return *get<Array>(index);
    case Kind::dictionary:
      break;
  }
  return *get<Dictionary>(index);
}

PropertyList::Scalar PropertyList::scalar(Index index) const {
  const Object& object = objects_[index];
  const bool hasBytes = object.kind == Kind::string || object.kind == Kind::data;
  return {object.kind, hasBytes ? 0 : object.bits, hasBytes ? bytes(object) : std::string_view()};
}

std::optional<PropertyList::Index> PropertyList::find(Index index, std::string_view key) const {
  const auto dictionary = get<Dictionary>(index);
  if (!dictionary) return std::nullopt;
  const auto members = dictionary->members;
  const auto found = std::find_if(members.rbegin(), members.rend(),
                                  [&](const Member& member) { return string(member.key) == key; });
  if (found == members.rend()) return std::nullopt;
  return found->value;
}

std::optional<std::string_view> PropertyList::findString(Index index, std::string_view key) const {
  const std::optional<Index> value = find(index, key);
  return value ? get<std::string_view>(*value) : std::nullopt;
}

std::optional<std::int64_t> PropertyList::integer(Index index) const {
  if (const auto value = get<std::int64_t>(index)) return value;
  const auto value = get<std::uint64_t>(index);
  if (!value || *value > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(*value);
}

std::size_t PropertyList::memory() const {
  return objects_.capacity() * sizeof(Object) + bytes_.capacity() +
         elements_.capacity() * sizeof(Index) + members_.capacity() * sizeof(Member);
}

PropertyList::Index PropertyList::add(const Node& node) {
  if (objects_.size() >= std::numeric_limits<Index>::max()) {
    throw std::length_error("property list: too many objects");
  }
  Object object{0, 0, static_cast<Kind>(node.index())};
  const auto store = [&object](auto& parts, const auto& added) {
    object.bits = append(parts, added);
    object.count = static_cast<std::uint32_t>(added.size());
  };
  std::visit(
      [&](const auto& value) {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, std::string_view>) {
          store(bytes_, value);
        } else if constexpr (std::is_same_v<Value, Data>) {
          store(bytes_, value.bytes);
        } else if constexpr (std::is_same_v<Value, Array>) {
          store(elements_, value.elements);
        } else if constexpr (std::is_same_v<Value, Dictionary>) {
          store(members_, value.members);
        } else {
          object.bits = bitsOf(value);
        }
      },
      node);
  objects_.push_back(object);
  return static_cast<Index>(objects_.size() - 1);
}

void PropertyList::reserve(const Room& room) {
  objects_.reserve(room.objects);
  bytes_.reserve(room.bytes);
  elements_.reserve(room.elements);
  members_.reserve(room.members);
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
