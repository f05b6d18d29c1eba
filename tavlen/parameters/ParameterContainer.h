#pragma once

#include <concepts>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/parameters/Parameter.h"

namespace tavlen {

struct ParameterContainer;

/// A list of parameters.
struct ArrayParameter {
  static constexpr std::string_view typeName = "ArrayParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  using Item = Parameter;

  std::vector<ParameterContainer> _items;

  static ArrayParameter withItems(std::vector<Parameter> items);
  std::vector<Parameter> items() const;
  void setItems(std::vector<Parameter> items);

  static constexpr auto codedFields() {
    return std::tuple{requiredField("items", &ArrayParameter::_items)};
  }
  bool operator==(const ArrayParameter&) const = default;
};

/// A list of pairs, in the user's order; nothing keeps keys apart.
struct DictionaryParameter {
  static constexpr std::string_view typeName = "DictionaryParameter";
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");

  struct Pair;
  using Item = Pair;

  std::vector<Pair> _items;

  static DictionaryParameter withItems(std::vector<Pair> items);
  const std::vector<Pair>& items() const { return _items; }
  void setItems(std::vector<Pair> items);

  static constexpr auto codedFields() {
    return std::tuple{requiredField("items", &DictionaryParameter::_items)};
  }
  bool operator==(const DictionaryParameter&) const = default;
};

/// The box that a stored parameter lies in: coded with its kind's identifier under the type key,
/// next to the kind's own fields. Every kind may stand at any depth, since collections hold boxes.
struct ParameterContainer {
  Parameter value;

  /// The identifiers of all kinds, in the order of their look-up.
  static std::span<const std::string_view> supportedTypes();

  bool operator==(const ParameterContainer&) const = default;
};

/// One entry of a dictionary parameter.
struct DictionaryParameter::Pair {
  ParameterContainer _key;
  ParameterContainer _value;

  static Pair with(Parameter key, Parameter value) {
    return {{std::move(key)}, {std::move(value)}};
  }
  const Parameter& key() const { return _key.value; }
  void setKey(Parameter key) { _key.value = std::move(key); }
  const Parameter& value() const { return _value.value; }
  void setValue(Parameter value) { _value.value = std::move(value); }

  static constexpr auto codedFields() {
    return std::tuple{requiredField("key", &Pair::_key), requiredField("value", &Pair::_value)};
  }
  bool operator==(const Pair&) const = default;
};

/// A parameter that holds other parameters, as a list of items of its own type.
template <class Kind>
concept CollectionParameter = requires(Kind kind, std::vector<typename Kind::Item> items) {
  { Kind::withItems(std::move(items)) } -> std::same_as<Kind>;
  { kind.items() } -> std::convertible_to<std::vector<typename Kind::Item>>;
  kind.setItems(std::move(items));
};
static_assert(CollectionParameter<ArrayParameter> && CollectionParameter<DictionaryParameter>);

}  // namespace tavlen
