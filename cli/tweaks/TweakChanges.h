#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

/// What differs between two states of a tweak: one setting, override, hook or file. `before` and
/// `after` are values as a text has them, and are missing where there is no value.
struct TweakChange {
  /// A value of a hook that differs.
  struct Part {
    std::string key;  ///< as in a text: "types", "name", "return", "args.0"
    std::optional<std::string> before;
    std::optional<std::string> after;

    static constexpr auto codedFields() {
      return std::tuple{requiredField("key", &Part::key), optionalField("before", &Part::before),
                        optionalField("after", &Part::after)};
    }
  };

  static constexpr const char* kAdded = "added";
  static constexpr const char* kChanged = "changed";
  static constexpr const char* kRemoved = "removed";

  std::string change;   ///< one of the three above
  std::string subject;  ///< "name", "hook", "hook order", "icon", "file"
  /// What tells it from others of its subject: a method, the kind of an override, a path.
  std::optional<std::string> name = {};
  std::optional<std::string> before = {};
  std::optional<std::string> after = {};
  std::optional<std::vector<Part>> parts = {};  ///< of a hook

  static constexpr auto codedFields() {
    return std::tuple{requiredField("change", &TweakChange::change),
                      requiredField("subject", &TweakChange::subject),
                      optionalField("name", &TweakChange::name),
                      optionalField("before", &TweakChange::before),
                      optionalField("after", &TweakChange::after),
                      optionalField("parts", &TweakChange::parts)};
  }
};

/// What differs between two manifests. Of several hooks of one method, the first is compared with
/// the first, and so on; so are overrides of one kind. Null hooks do not count.
std::vector<TweakChange> changesBetween(const TweakFile::Manifest& before,
                                        const TweakFile::Manifest& after);

/// Prints changes to the standard output: for people a line for each, and one for each part of a
/// hook, or a JSON array. Throws as printData() does.
void printChanges(const std::vector<TweakChange>& changes, bool json);

}  // namespace tavlen::cli
