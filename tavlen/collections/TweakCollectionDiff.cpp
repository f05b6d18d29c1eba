#include "tavlen/collections/TweakCollectionDiff.h"

namespace tavlen {

std::optional<GenericTweakDiffMode> TweakCollection::Diff::genericMode() const {
  switch (mode) {
    case Mode::create:
      return GenericTweakDiffMode::create;
    case Mode::delete_:
      return GenericTweakDiffMode::delete_;
    case Mode::updateManifest:
      break;
  }
  return std::nullopt;
}

}  // namespace tavlen
