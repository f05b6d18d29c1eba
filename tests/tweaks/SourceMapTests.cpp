#include "tavlen/tweaks/SourceMap.h"

#include <gtest/gtest.h>

#include "tavlen/tweaks/TweakSource.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using Place = std::optional<TextPosition>;

std::string mapOf(const std::string& mappings, const std::string& sources = R"("a",null)") {
  return R"({"version":3,"sources":[)" + sources + R"(],"mappings":")" + mappings + "\"}";
}

TEST(SourceMap, LeadsToTheNearestSegmentBefore) {
  // In line 1 of the code: columns 2 and 6. In line 3: 1, back to the first column of the source;
  // 17, without a source; 33, of the other source; 9, out of order.
  const SourceMap map = SourceMap::decoded(mapOf("CAAE,IACGA;;AADH,gB,gBCAA,xBDAC"));
  const struct {
    TextPosition code;
    Place source;
  } cases[] = {{{1, 1}, {{1, 3}}},  {{1, 2}, {{1, 3}}}, {{1, 5}, {{1, 3}}}, {{1, 6}, {{2, 6}}},
               {{1, 99}, {{2, 6}}}, {{2, 1}, {}},       {{3, 8}, {{1, 3}}}, {{3, 9}, {{1, 4}}},
               {{3, 16}, {{1, 4}}}, {{3, 17}, {}},      {{3, 33}, {}},      {{4, 1}, {}}};
  for (const auto& c : cases) {
    EXPECT_EQ(map.sourceOf(c.code), c.source) << c.code.line << ":" << c.code.column;
  }
}

TEST(SourceMap, FindsTheLinesOfALargeMap) {
  // Three segments in each line, for three lines of the source; an empty line after each.
  constexpr std::size_t kLines = 2000;
  std::string mappings;
  for (std::size_t i = 0; i < kLines; ++i) mappings += "AACA,CACA,CACA;;";
  const SourceMap map = SourceMap::decoded(mapOf(mappings));
  for (std::size_t line = 0; line < kLines; ++line) {
    for (std::size_t column = 1; column <= 3; ++column)
      ASSERT_EQ(map.sourceOf({2 * line + 1, column}), Place({3 * line + column + 1, 1})) << line;
    ASSERT_EQ(map.sourceOf({2 * line + 2, 1}), Place()) << line;
  }
}

TEST(SourceMap, MalformedMapsAreRefused) {
  const struct {
    std::string json;
    std::string message;
  } cases[] = {{"[]", "expected a dictionary, found an array"},
               {R"({"version":2,"sources":[],"mappings":""})", "version: unknown version 2"},
               {mapOf("AAAA,A A"), "mappings: a malformed number at character 6"},
               {mapOf("AAAg"), "mappings: a malformed number at character 4"},
               {mapOf("AA"), "mappings: a segment with too few numbers at character 2"},
               {mapOf("AAAAAA"), "mappings: a segment with too many numbers at character 5"},
               {mapOf("D"), "mappings: a number out of range at character 1"},
               {mapOf("AAAD"), "mappings: a number out of range at character 4"},
               {mapOf("+/////D;+/////D,C"), "mappings: a number out of range at character 17"},
               {mapOf("ggggggggC"), "mappings: a number out of range at character 7"},
               {mapOf("AEAA"), "mappings: an unknown source at character 4"},
               {mapOf("AAAA", ""), "mappings: an unknown source at character 4"}};
  for (const auto& c : cases) {
    EXPECT_EQ(messageOf<DecodingError>([&] { SourceMap::decoded(c.json); }), c.message) << c.json;
  }
}

TEST(TweakSource, APlaceBelongsToAHookOrToTheScript) {
  using Origin = TweakSource::Place;
  const Hook hooks[] = {Hook::with("B", "b", "v", false, {}), Hook::with("A", "a", "v", true, {}),
                        Hook::with("A", "c", "v", false, {})};
  const TweakSource source(hooks, "x\ny");
  const std::string text =
      "hookClass(\"A\", {}, {\n\t\"v+a\": function() {\n\t\treturn %orig;\n\t},\n"
      "\t\"v-c\": function() {\n\t\treturn %orig;\n\t},\n});\n\n"
      "hookClass(\"B\", {}, {\n\t\"v-b\": function() {\n\t\treturn %orig;\n\t},\n});\n\nx\ny";
  ASSERT_EQ(source.text(), text);
  const struct {
    TextPosition place;
    std::optional<Origin> origin;
  } cases[] = {{{1, 1}, {}},
               {{2, 1}, TweakSource::HookPlace{1}},
               {{4, 3}, TweakSource::HookPlace{1}},
               {{4, 4}, {}},
               {{5, 2}, TweakSource::HookPlace{2}},
               {{8, 1}, {}},
               {{10, 1}, {}},
               {{12, 3}, TweakSource::HookPlace{0}},
               {{15, 1}, {}},
               {{16, 1}, TextPosition{1, 1}},
               {{17, 2}, TextPosition{2, 2}},
               {{17, 3}, {}}};
  for (const auto& c : cases) {
    EXPECT_EQ(source.placeAt(c.place), c.origin) << c.place.line << ":" << c.place.column;
  }
}

}  // namespace
}  // namespace tavlen
