#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen::cli {

/// A hook as `--json` prints it.
struct HookRow {
  std::string method;               ///< as methodText() writes it
  std::string className;            ///< of the method
  std::string selector;             ///< of the method
  std::string signature;            ///< the method's type encoding
  std::optional<std::string> name;  ///< the name that the user gave it
  /// The parameters by their indices as in Hook, in the form of manifests.
  std::map<std::int64_t, ParameterContainer> args;

  static constexpr auto codedFields() {
    return std::tuple{requiredField("method", &HookRow::method),
                      requiredField("class", &HookRow::className),
                      requiredField("selector", &HookRow::selector),
                      requiredField("signature", &HookRow::signature),
                      optionalField("name", &HookRow::name),
                      requiredField("args", &HookRow::args)};
  }
};

/// The row of `hook`.
HookRow rowOf(const Hook& hook);

/// Warns of what disagrees within a hook of `tweak`, as the user named the tweak: of all that
/// problemsOf() finds, or only of the parameter with the index `argument`.
void warnOfProblems(const std::string& tweak, const Hook& hook,
                    std::optional<std::int64_t> argument = std::nullopt);

}  // namespace tavlen::cli
