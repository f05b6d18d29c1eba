#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/parameters/ParameterPath.h"
#include "tavlen/tweaks/Hook.h"

namespace tavlen {

/// A place in a hook.
struct TAVLEN_API HookPlace {
  /// The parts of a hook.
  enum class Part { method, className, selector, signature, value };

  /// The part; `method` for the hook as a whole.
  Part part = Part::method;
  /// Of a value, the index of the argument, or Hook::kReturnValue.
  std::int64_t argument = 0;
  /// Of a value, the way from the argument's value to it.
  ParameterPath path = {};

  bool operator==(const HookPlace&) const = default;
};

/// A likely mistake in a hook, with which its tweak still builds.
struct TAVLEN_API HookProblem {
  /// Where it is.
  HookPlace place;
  /// The name of the rule, for programs: "out-of-range". A constant.
  std::string_view code;
  /// The fault, to be shown after its place.
  std::string text;

  bool operator==(const HookProblem&) const = default;
};

/// The place in the stored hook: "signature", "args.0.items[2].value"; empty for the whole hook.
TAVLEN_API std::string documentPath(const Hook& hook, const HookPlace& place);

/// The fault of a hooked method's type encoding, to be shown after the word "signature": it is
/// malformed, or does not match the selector. Probably it is mistyped; the library stores any text.
/// Returns nothing if it fits.
TAVLEN_API std::optional<std::string> signatureProblem(const Hook& hook);

/// Names that no class or selector can have, and what disagrees within a hook: the signature with
/// the selector, the values with the types in the signature. These are values for indices that the
/// method does not have, values of another kind than the type (a text for a Boolean, any constant
/// for a structure), numbers out of its range, selectors within collections, and integers beyond
/// 2^53, which generated code cannot hold. Code is not checked, nor are classes of objects.
TAVLEN_API std::vector<HookProblem> problemsOf(const Hook& hook);

}  // namespace tavlen
