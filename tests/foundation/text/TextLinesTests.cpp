#include "tavlen/foundation/text/TextLines.h"

#include <gtest/gtest.h>

namespace tavlen {
namespace {

TEST(TextLines, APlaceLeadsToItsByte) {
  constexpr std::string_view kText = "a\r\n\u00e9\u65e5\U0001F600b\u2028\r\rc\n";
  ASSERT_EQ(lineEndCount(kText), 5U);
  const struct {
    TextPosition place;
    std::optional<std::string_view> rest;  // of the line
  } cases[] = {{{1, 1}, "a"},
               {{1, 2}, ""},
               {{1, 3}, std::nullopt},
               {{2, 2}, "\u65e5\U0001F600b"},
               {{2, 3}, "\U0001F600b"},
               // Either half of a pair is its character.
               {{2, 4}, "\U0001F600b"},
               {{2, 5}, "b"},
               {{2, 6}, ""},
               {{2, 7}, std::nullopt},
               {{3, 1}, ""},
               {{4, 1}, ""},
               {{5, 1}, "c"},
               {{6, 1}, ""},
               {{7, 1}, std::nullopt},
               {{0, 1}, std::nullopt}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.place.line) + ":" + std::to_string(c.place.column));
    const auto offset = offsetAt(kText, c.place);
    ASSERT_EQ(offset.has_value(), c.rest.has_value());
    if (!c.rest) continue;
    const std::string_view line = lineAt(kText, c.place.line);
    const auto before = *offset - static_cast<std::size_t>(line.data() - kText.data());
    EXPECT_EQ(line.substr(before), *c.rest);
    EXPECT_EQ(offsetAt(kText, linePositionAt(kText, *offset)), offset);
  }
}

}  // namespace
}  // namespace tavlen
