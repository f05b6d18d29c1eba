#include "tavlen/tweaks/Manifest.h"

#include <utility>

namespace tavlen {

std::vector<Override> TweakFile::Manifest::overrides() const {
  std::vector<Override> result;
  result.reserve(_overrides.size());
  for (const OverrideContainer& box : _overrides) result.push_back(box.value);
  return result;
}

void TweakFile::Manifest::setOverrides(std::vector<Override> overrides) {
  _overrides.clear();
  _overrides.reserve(overrides.size());
  for (Override& value : overrides) _overrides.push_back({std::move(value)});
}

std::vector<Hook> TweakFile::Manifest::hooks() const {
  std::vector<Hook> result;
  result.reserve(_hooks.size());
  for (const BoxedOptional<Hook>& hook : _hooks) {
    if (hook) result.push_back(*hook);
  }
  return result;
}

void TweakFile::Manifest::setHooks(std::vector<Hook> hooks) {
  _hooks.assign(std::make_move_iterator(hooks.begin()), std::make_move_iterator(hooks.end()));
}

}  // namespace tavlen
