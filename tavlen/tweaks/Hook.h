#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/introspection/classes/MethodIdentity.h"
#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

class ObjCClass;
class ObjCMethod;

/// One Objective-C method that a tweak replaces, with the constants that replace its arguments and
/// its result. The signature is not checked against the selector, nor are the indices.
struct TAVLEN_API Hook {
  /// The index of the method's result in `args`. Arguments count from 0, without the receiver and
  /// the selector.
  static constexpr std::int64_t kReturnValue = -1;

  /// A name that the user chose, if any.
  std::optional<std::string> customName;
  /// The class of the method.
  std::string className;
  /// The method's selector.
  std::string selector;
  /// The method's types, as an Objective-C type encoding.
  std::string signature;
  /// Whether it is a class method rather than an instance method.
  bool isClassMethod = false;
  /// The replacement values in their boxes, as they are coded; see args().
  std::map<std::int64_t, ParameterContainer> _args;

  /// A hook without a custom name.
  static Hook with(std::string className, std::string selector, std::string signature,
                   bool isClassMethod, std::map<std::int64_t, Parameter> args);
  /// A hook of `method` in `cls`. The class need not list the method.
  static Hook with(const ObjCClass& cls, const ObjCMethod& method,
                   std::map<std::int64_t, Parameter> args);

  /// A new record of the hooked method, with the signature as its type encoding.
  std::shared_ptr<ObjCMethod> method() const;

  /// A copy of the replacement values by index, out of their boxes. An argument or a result without
  /// an entry is not changed.
  std::map<std::int64_t, Parameter> args() const;
  /// Replaces all replacement values.
  void setArgs(std::map<std::int64_t, Parameter> args);

  /// "+" for a class method, "-" for an instance method.
  std::string_view prefix() const { return isClassMethod ? "+" : "-"; }
  /// The hooked method.
  MethodIdentity identity() const { return {className, selector, isClassMethod}; }
  /// The key by which the transpiler identifies the method within its class: signature, prefix and
  /// selector.
  std::string transpilerKey() const;
  /// Appends transpilerKey() to `out`.
  void appendTranspilerKey(std::string& out) const;

  static constexpr auto codedFields() {
    return std::tuple{
        optionalField("customName", &Hook::customName),
        requiredField("className", &Hook::className),
        requiredField("selector", &Hook::selector),
        requiredField("signature", &Hook::signature),
        requiredField("isClassMethod", &Hook::isClassMethod),
        requiredField("args", &Hook::_args),
    };
  }
  bool operator==(const Hook&) const = default;
};

}  // namespace tavlen
