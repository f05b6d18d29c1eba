#include "tavlen/tweaks/TweakFileDiff.h"

namespace tavlen {

std::optional<GenericTweakDiffMode> TweakFile::Diff::genericMode() const {
  if (std::holds_alternative<Create>(mode)) return GenericTweakDiffMode::create;
  if (std::holds_alternative<Delete>(mode)) return GenericTweakDiffMode::delete_;
  return std::nullopt;
}

}  // namespace tavlen
