#pragma once

#include <string>
#include <vector>

#include "tavlen/tweaks/Manifest.h"

namespace tavlen::cli {

/// What a person sees of the difference between two manifests: a sentence for each setting, each
/// override and each hook that was added, changed or removed, such as "changed hook
/// -[NoteList titleAt:]: return, args.0". Of several hooks of one method, the first is compared
/// with the first, and so on; so are overrides of one kind. Null hooks do not count.
std::vector<std::string> changesBetween(const TweakFile::Manifest& before,
                                        const TweakFile::Manifest& after);

}  // namespace tavlen::cli
