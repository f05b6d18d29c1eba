#pragma once

#include <span>
#include <string_view>

#include "tavlen/parameters/ArrayParameter.h"
#include "tavlen/parameters/DictionaryParameter.h"
#include "tavlen/parameters/Parameter.h"

namespace tavlen {

/// The box that a stored parameter lies in: coded with its kind's identifier under the type key,
/// beside the kind's own fields. Every kind may stand at any depth, since collections hold boxes.
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

}  // namespace tavlen
