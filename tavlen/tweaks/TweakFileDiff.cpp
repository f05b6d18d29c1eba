#include "tavlen/tweaks/TweakFileDiff.h"

#include <utility>

namespace tavlen {

TweakFile::Diff::Diff(std::shared_ptr<TweakFile> changed, Mode how)
    : tweak(std::move(changed)), mode(std::move(how)) {}

std::optional<GenericTweakDiffMode> TweakFile::Diff::genericMode() const {
  if (std::holds_alternative<Create>(mode)) return GenericTweakDiffMode::create;
  if (std::holds_alternative<Delete>(mode)) return GenericTweakDiffMode::delete_;
  return std::nullopt;
}

}  // namespace tavlen
