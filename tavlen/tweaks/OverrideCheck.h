#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/bundles/OverrideContainer.h"
#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A likely mistake in the overrides of a tweak, with which it still builds.
struct TAVLEN_API OverrideProblem {
  /// Of the override.
  std::size_t index = 0;
  /// The name of the rule, for programs: "empty-override". A constant.
  std::string_view code;
  /// The fault, to be shown after its place.
  std::string text;
};

/// What is wrong with overrides: texts that are empty, identifiers and versions that the system
/// does not accept, orientations named twice, and kinds that stand twice, of which the last counts.
/// In the order of the list. Threads: any.
TAVLEN_API std::vector<OverrideProblem> problemsOf(const std::vector<OverrideContainer>& overrides);

}  // namespace tavlen
