#pragma once

#include <vector>

#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/tweaks/TweakPackaging.h"

namespace tavlen {

/// The work of TweakCollection::package(): packageTweak() for each of the opened members, in order.
/// The icon is the first member's that has one. What fails may leave members packaged before it in
/// the directory, but `tweakInfo` as it was.
void packageCollection(const TweakCollection::Opened& collection,
                       const std::vector<TweakFile::Opened>& members, const Info& target,
                       const Packaging& packaging, TweakInfo& tweakInfo);

}  // namespace tavlen
