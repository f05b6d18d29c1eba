#pragma once

#include <concepts>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/parameters/Parameter.h"

namespace tavlen {

struct ParameterContainer;

/// A list of parameters.
struct TAVLEN_API ArrayParameter {
  static constexpr std::string_view typeName = "ArrayParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  /// The type of items().
  using Item = Parameter;

  /// The items in their boxes, as they are coded.
  std::vector<ParameterContainer> _items;

  /// An array of `items`.
  static ArrayParameter withItems(std::vector<Parameter> items);
  /// A copy of the items, out of their boxes.
  std::vector<Parameter> items() const;
  /// Replaces all items.
  void setItems(std::vector<Parameter> items);

  static constexpr auto codedFields() {
    return std::tuple{requiredField("items", &ArrayParameter::_items)};
  }
  bool operator==(const ArrayParameter&) const = default;
};

/// A list of pairs, in the user's order. Keys may repeat.
struct TAVLEN_API DictionaryParameter {
  static constexpr std::string_view typeName = "DictionaryParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  struct Pair;
  /// The type of items().
  using Item = Pair;

  /// The pairs, as they are coded.
  std::vector<Pair> _items;

  /// A dictionary of `items`.
  static DictionaryParameter withItems(std::vector<Pair> items);
  /// The pairs. Valid until the dictionary changes.
  const std::vector<Pair>& items() const { return _items; }
  /// Replaces all pairs.
  void setItems(std::vector<Pair> items);

  static constexpr auto codedFields() {
    return std::tuple{requiredField("items", &DictionaryParameter::_items)};
  }
  bool operator==(const DictionaryParameter&) const = default;
};

/// The box around a stored parameter. It is coded as the kind's identifier under the type key, next
/// to the kind's own fields. Collections hold boxes, so any kind may appear at any depth.
struct TAVLEN_API ParameterContainer {
  /// The boxed parameter.
  Parameter value;

  /// The identifiers of all kinds, in the order of the alternatives of Parameter.
  static std::span<const std::string_view> supportedTypes();

  bool operator==(const ParameterContainer&) const = default;
};

/// One entry of a dictionary parameter.
struct TAVLEN_API DictionaryParameter::Pair {
  /// The key in its box, as it is coded.
  ParameterContainer _key;
  /// The value in its box, as it is coded.
  ParameterContainer _value;

  /// A pair of `key` and `value`.
  static Pair with(Parameter key, Parameter value) {
    return {{std::move(key)}, {std::move(value)}};
  }
  /// The key, which may be of any kind.
  const Parameter& key() const { return _key.value; }
  /// Replaces the key.
  void setKey(Parameter key) { _key.value = std::move(key); }
  /// The value.
  const Parameter& value() const { return _value.value; }
  /// Replaces the value.
  void setValue(Parameter value) { _value.value = std::move(value); }

  static constexpr auto codedFields() {
    return std::tuple{requiredField("key", &Pair::_key), requiredField("value", &Pair::_value)};
  }
  bool operator==(const Pair&) const = default;
};

/// A parameter that holds a list of items, which are parameters or pairs of them.
template <class Kind>
concept CollectionParameter = requires(Kind kind, std::vector<typename Kind::Item> items) {
  { Kind::withItems(std::move(items)) } -> std::same_as<Kind>;
  { kind.items() } -> std::convertible_to<std::vector<typename Kind::Item>>;
  kind.setItems(std::move(items));
};
static_assert(CollectionParameter<ArrayParameter> && CollectionParameter<DictionaryParameter>);

}  // namespace tavlen
