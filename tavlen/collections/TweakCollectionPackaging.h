#pragma once

#include <vector>

#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/tweaks/TweakPackaging.h"

namespace tavlen {

/// Implements TweakCollection::package(): calls packageTweak() for each of the opened members, in
/// order. The icon is that of the first member that has one. Blocks, and cannot be cancelled.
/// Throws as TweakProtocol::package() does; an error may leave earlier members' packages in the
/// directory, but does not change `tweakInfo`.
TAVLEN_API void packageCollection(const TweakCollection::Opened& collection,
                                  const std::vector<TweakFile::Opened>& members, const Info& target,
                                  const Packaging& packaging, TweakInfo& tweakInfo);

}  // namespace tavlen
