#include "tavlen/items/TweakGlyph.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tavlen/items/GlyphNames.h"

namespace tavlen {
namespace {

struct GlyphCase {
  TweakGlyph glyph;
  bool known;
  std::optional<TweakGlyph> suggested;
};

TEST(TweakGlyph, UnknownNamesGetASuggestion) {
  const GlyphCase kCases[] = {
      {TweakGlyph::default_(), true, {{"tools", "solid"}}},
      {{"500px", "brands"}, true, {{"500px", "brands"}}},  // the table's first row
      {{"zhihu", "brands"}, true, {{"zhihu", "brands"}}},  // and its last
      {{"address-book", "regular"}, true, {{"address-book", "regular"}}},
      {{"address-book", "light"}, false, {{"address-book", "solid"}}},  // a paid style
      {{"tools", "regular"}, false, {{"tools", "solid"}}},
      {{"tools", ""}, false, {{"tools", "solid"}}},
      {{"tool", "solid"}, false, {{"tools", "solid"}}},
      {{"Tools", "solid"}, false, {{"tools", "solid"}}},
      {{"adress-bok", "regular"}, false, {{"address-book", "regular"}}},
      {{"wrnehc", "solid"}, false, {{"wrench", "solid"}}},  // two swaps
      {{"githbu", "solid"}, false, {{"github", "brands"}}},
      {{"acquisitions-incorporated123", "brands"},
       false,
       {{"acquisitions-incorporated", "brands"}}},
      {{"", "solid"}, false, std::nullopt},
      {{"qqqqqq", "solid"}, false, std::nullopt},
      {{std::string(1'000'000, 'a'), "solid"}, false, std::nullopt},
      {{std::string("tools\0", 6), "solid"}, false, {{"tools", "solid"}}}};
  for (const GlyphCase& c : kCases) {
    SCOPED_TRACE(c.glyph.icon.substr(0, 40) + " " + c.glyph.style);
    EXPECT_EQ(isKnownGlyph(c.glyph), c.known);
    const std::optional<TweakGlyph> suggested = suggestedGlyph(c.glyph);
    EXPECT_EQ(suggested, c.suggested) << (suggested ? suggested->icon : "none");
    EXPECT_TRUE(!suggested || isKnownGlyph(*suggested));
  }
}

}  // namespace
}  // namespace tavlen
