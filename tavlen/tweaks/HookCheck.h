#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/parameters/ParameterPath.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen {

/// A likely mistake in a hook, with which its tweak still builds.
struct HookProblem {
  /// The index of the argument, or Hook::kReturnValue; nothing for the signature.
  std::optional<std::int64_t> argument;
  /// The way from the argument's value to the one at fault.
  ParameterPath path;
  /// The fault, to be shown after its place.
  std::string text;

  bool operator==(const HookProblem&) const = default;
};

/// The problem's place in the stored hook: "signature", "args.0.items[2].value".
std::string documentPath(const Hook& hook, const HookProblem& problem);

/// The fault of a hooked method's type encoding, to be shown after the word "signature": it is
/// malformed, or does not match the selector. Probably it is mistyped; the library stores any text.
/// Returns nothing if it fits.
std::optional<std::string> signatureProblem(const Hook& hook);

/// What disagrees within a hook: the signature with the selector, the values with the types in the
/// signature. These are values for indices that the method does not have, values of another kind
/// than the type (a text for a Boolean, any constant for a structure), numbers out of its range,
/// selectors within collections, and integers beyond 2^53, which generated code cannot hold. Code
/// is not checked, nor are classes of objects.
std::vector<HookProblem> problemsOf(const Hook& hook);

}  // namespace tavlen
