#include <gtest/gtest.h>

#include "tavlen/items/GlyphNames.h"
#include "tavlen/items/TweakConfiguration.h"
#include "tavlen/items/TweakError.h"

namespace tavlen {
namespace {

TEST(TweakGlyph, UnknownNamesGetASuggestion) {
  const struct {
    TweakGlyph glyph;
    bool isKnown;
    std::optional<TweakGlyph> suggested;
  } cases[] = {{TweakGlyph::default_(), true, {{"tools", "solid"}}},
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
  for (const auto& [glyph, isKnown, suggested] : cases) {
    SCOPED_TRACE(glyph.icon.substr(0, 40) + " " + glyph.style);
    EXPECT_EQ(isKnownGlyph(glyph), isKnown);
    EXPECT_EQ(suggestedGlyph(glyph), suggested);
  }
}

TEST(TweakColor, TheirNamesAndOrderAreStored) {
  std::string names;
  for (const TweakColor color : allCases<TweakColor>()) {
    EXPECT_EQ(index(color), static_cast<std::size_t>(std::count(names.begin(), names.end(), ' ')));
    EXPECT_EQ(fromRawValue<TweakColor>(rawValue(color)), color);
    names += std::string(rawValue(color)) + " ";
  }
  EXPECT_EQ(names,
            "lightGreen darkGreen lightBlue lightYellow darkYellow lightRed darkRed lightPurple "
            "darkPurple lightPink ");
  EXPECT_EQ(index(static_cast<TweakColor>(77)), 0U);
  for (const char* text : {"darkBlue", "lightgreen", "", " lightGreen"}) {
    EXPECT_FALSE(fromRawValue<TweakColor>(text)) << text;
  }
}

TEST(TweakConfiguration, EqualsOnlyItsOwnType) {
  const ItemConfiguration<TweakFile> record{"N", TweakColor::lightPink, "a.b", std::nullopt};
  const ItemConfiguration<TweakCollection> other{"N", TweakColor::lightPink, "a.b", std::nullopt};
  auto withGlyph = record;
  withGlyph.setGlyph(TweakGlyph::default_());
  const TweakConfiguration configuration(record);
  EXPECT_EQ(configuration.glyph(), TweakGlyph::default_());
  EXPECT_TRUE(configuration.isEqualTo(TweakConfiguration(record)));
  EXPECT_FALSE(configuration.isEqualTo(TweakConfiguration(withGlyph))) << "though shown alike";
  EXPECT_FALSE(configuration.isEqualTo(TweakConfiguration(other)));
}

TEST(TweakError, SaysWhatIsWrong) {
  const auto mismatch = TweakError::bundleIDMismatch("a.b", "%@ and %1$@");
  EXPECT_EQ(TweakError::missing("%@ \xE2\x82\xAC").description(), "Missing %@ €");
  EXPECT_EQ(mismatch.description(), "Bundle ID mismatch (expected 'a.b' but found '%@ and %1$@')");
  EXPECT_EQ(TweakError::notFound().description(), "Not found");
  EXPECT_NE(mismatch, TweakError::bundleIDMismatch("%@ and %1$@", "a.b"));
}

}  // namespace
}  // namespace tavlen
