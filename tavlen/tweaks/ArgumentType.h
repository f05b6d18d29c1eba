#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/objc/MethodTypes.h"

namespace tavlen {

/// What constants can replace an argument or a result, by its type. A plain value.
struct TAVLEN_API ArgumentType {
  /// The families of types.
  enum class Kind {
    unknown,  ///< malformed, or of a kind that no constant is checked against
    nothing,  ///< void
    boolean,
    integer,
    real,
    object,
    block,
    class_,
    selector,
    text,  ///< char *
    pointer,
    structure,  ///< or a union
  };

  /// The family.
  Kind kind = Kind::unknown;
  /// The size of a number; 0 for other kinds.
  unsigned bits = 0;
  /// Of an integer.
  bool isSigned = false;

  /// The type that `encoding` begins with. Qualifiers do not count. `long` has 32 bits there.
  static ArgumentType from(std::string_view encoding);

  bool operator==(const ArgumentType&) const = default;
};

/// The types of a hooked method, without the receiver and the selector.
class TAVLEN_API HookTypes {
 public:
  /// Splits a method's type encoding, which must outlive the result. Returns nothing if it is
  /// malformed, or lacks the receiver or the selector.
  static std::optional<HookTypes> from(std::string_view signature);

  /// The number of arguments.
  std::int64_t count() const {
    return static_cast<std::int64_t>(types_.arguments.size()) - kHidden;
  }
  /// The type of an argument, or of the result for Hook::kReturnValue; unknown for other indices.
  ArgumentType at(std::int64_t index) const;

 private:
  static constexpr std::int64_t kHidden = 2;

  MethodTypes types_;
};

}  // namespace tavlen
