#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/introspection/classes/MethodIdentity.h"
#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

class ObjCClass;
class ObjCMethod;

/// One Objective-C method that a tweak replaces, with the constants that it puts in place of
/// arguments and result. Nothing checks that the signature agrees with the selector, or an index
/// with either.
struct Hook {
  /// The index in `args` of the method's result; the arguments after receiver and selector count
  /// from 0.
  static constexpr std::int64_t kReturnValue = -1;

  /// A name that the user chose; none unless set.
  std::optional<std::string> customName;
  std::string className;
  std::string selector;
  /// The method's types, as an Objective-C type encoding.
  std::string signature;
  bool isClassMethod = false;
  std::map<std::int64_t, ParameterContainer> _args;

  static Hook with(std::string className, std::string selector, std::string signature,
                   bool isClassMethod, std::map<std::int64_t, Parameter> args);
  /// A hook of `method`, which `cls` need not list.
  static Hook with(const ObjCClass& cls, const ObjCMethod& method,
                   std::map<std::int64_t, Parameter> args);

  /// A new record of the hooked method; its encoding is the signature.
  std::shared_ptr<ObjCMethod> method() const;

  /// The replacement values by index, out of their boxes. What has no entry stays as the caller, or
  /// the method's own implementation, gave it.
  std::map<std::int64_t, Parameter> args() const;
  void setArgs(std::map<std::int64_t, Parameter> args);

  /// "+" for a class method, "-" for an instance method.
  std::string_view prefix() const { return isClassMethod ? "+" : "-"; }
  MethodIdentity identity() const { return {className, selector, isClassMethod}; }
  /// What the transpiler knows the method by, within its class: signature, prefix and selector.
  std::string transpilerKey() const;
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
