#include <stdexcept>

#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

void TweakFile::package(const std::filesystem::path& /*directory*/, TweakProcessor& /*processor*/,
                        TweakInfo& /*tweakInfo*/, bool /*copyExecutables*/) const {
  throw std::logic_error("not there yet");
}

}  // namespace tavlen
