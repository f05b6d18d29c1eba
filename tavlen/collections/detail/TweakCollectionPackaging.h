#pragma once

#include <filesystem>

#include "tavlen/collections/TweakCollection.h"
#include "tavlen/device/TweakInfo.h"

namespace tavlen {

/// The work of TweakCollection::package(): packageTweak() for each member that opens, in order. The
/// icon is the first member's that has one. What fails may leave members packaged before it in
/// `directory`, but `tweakInfo` as it was.
void packageCollection(const TweakCollection& collection, const std::filesystem::path& directory,
                       const std::filesystem::path& transpiler, TweakInfo& tweakInfo,
                       bool copyExecutables);

}  // namespace tavlen
