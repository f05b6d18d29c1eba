#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// A sort of run-time entity that can be looked up by name.
struct RuntimeEntity {
  std::string_view typeName;
  /// The Foundation function that looks the entity up.
  std::string_view fetchFunction;
  /// The type encoding of that function's result.
  std::string_view retEncoding;
};

/// The run-time entity of that name, looked up at run time.
template <const RuntimeEntity& kEntity>
struct RuntimeParameter {
  static constexpr std::string_view typeName = kEntity.typeName;
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");
  static constexpr std::string_view fetchFunction = kEntity.fetchFunction;
  static constexpr std::string_view retEncoding = kEntity.retEncoding;

  std::string name;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("name", &RuntimeParameter::name)};
  }
  bool operator==(const RuntimeParameter&) const = default;
};

// An object's encoding, not a class's: stored hooks were built with it, and the run time passes
// both alike.
inline constexpr RuntimeEntity kRuntimeClass = {"ClassParameter", "NSClassFromString", "@"};
inline constexpr RuntimeEntity kRuntimeSelector = {"SelectorParameter", "NSSelectorFromString",
                                                   ":"};
inline constexpr RuntimeEntity kRuntimeProtocol = {"ProtocolParameter", "NSProtocolFromString",
                                                   "@"};

using ClassParameter = RuntimeParameter<kRuntimeClass>;
using SelectorParameter = RuntimeParameter<kRuntimeSelector>;
using ProtocolParameter = RuntimeParameter<kRuntimeProtocol>;

}  // namespace tavlen
