#include "tavlen/items/TweakGlyph.h"

namespace tavlen {

const TweakGlyph& TweakGlyph::default_() {
  static const TweakGlyph glyph{"tools", "solid"};
  return glyph;
}

}  // namespace tavlen
