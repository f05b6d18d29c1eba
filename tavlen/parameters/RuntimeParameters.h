#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/coding/TypeKeyedCoding.h"

namespace tavlen {

/// A kind of run-time entity that can be looked up by name.
struct TAVLEN_API RuntimeEntity {
  /// The parameter kind's type name.
  std::string_view typeName;
  /// The Foundation function that looks the entity up.
  std::string_view fetchFunction;
  /// The type encoding of that function's result.
  std::string_view retEncoding;
};

/// A class, selector or protocol, which is looked up by its name at run time.
template <const RuntimeEntity& kEntity>
struct RuntimeParameter {
  static constexpr std::string_view typeName = kEntity.typeName;
  static constexpr std::string_view identifier = identifierWithBaseName(typeName, "Parameter");
  /// As RuntimeEntity::fetchFunction.
  static constexpr std::string_view fetchFunction = kEntity.fetchFunction;
  /// As RuntimeEntity::retEncoding.
  static constexpr std::string_view retEncoding = kEntity.retEncoding;

  /// The entity's name at run time.
  std::string name;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("name", &RuntimeParameter::name)};
  }
  bool operator==(const RuntimeParameter&) const = default;
};

/// The encoding is that of an object, not of a class: hooks have always been built with it, and the
/// run time passes both in the same way.
inline constexpr RuntimeEntity kRuntimeClass = {"ClassParameter", "NSClassFromString", "@"};
/// A selector.
inline constexpr RuntimeEntity kRuntimeSelector = {"SelectorParameter", "NSSelectorFromString",
                                                   ":"};
/// A protocol, which is an object as well.
inline constexpr RuntimeEntity kRuntimeProtocol = {"ProtocolParameter", "NSProtocolFromString",
                                                   "@"};

/// A class, by name.
using ClassParameter = RuntimeParameter<kRuntimeClass>;
/// A selector, by name.
using SelectorParameter = RuntimeParameter<kRuntimeSelector>;
/// A protocol, by name.
using ProtocolParameter = RuntimeParameter<kRuntimeProtocol>;

}  // namespace tavlen
