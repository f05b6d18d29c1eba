#include <stdexcept>

#include "tavlen/collections/TweakCollection.h"

namespace tavlen {

void TweakCollection::package(const std::filesystem::path& /*directory*/,
                              TweakProcessor& /*processor*/, TweakInfo& /*tweakInfo*/,
                              bool /*copyExecutables*/) const {
  throw std::logic_error("not there yet");
}

}  // namespace tavlen
