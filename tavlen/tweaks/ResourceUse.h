#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/tweaks/Manifest.h"

namespace tavlen {

/// How a tweak uses one of its resources. A plain value.
struct TAVLEN_API ResourceUse {
  /// The number of values that name the file, or whose text contains its name, and of scripts that
  /// do.
  std::size_t count = 0;
  /// The first of them: a place in the manifest ("hooks[2].args.0"), or the script's file name;
  /// empty if there is none.
  std::string first;
};

/// The name of the resource from which `parameter` is loaded; null for other kinds.
TAVLEN_API const std::string* resourceNameIn(const Parameter& parameter);

/// The uses of each of `resources`, which are paths relative to the tweak's resources. Code and
/// other texts use a file if they contain its name without its folder: what they do with it cannot
/// be known, so a file counts as used rather than as unused. Threads: any.
TAVLEN_API std::vector<ResourceUse> usesOf(const std::vector<std::string>& resources,
                                           const TweakFile::Manifest& manifest,
                                           std::string_view script);

}  // namespace tavlen
