#include "tavlen/foundation/text/StyledText.h"

#include <gtest/gtest.h>

namespace tavlen {
namespace {

TEST(StyledText, JoinsWhatLooksAlike) {
  const StyledText::Color red{1, 0, 0, 1};
  const StyledText::Color blue{0, 0, 1, 1};
  const StyledText::Font small{"Menlo", 9};
  using Runs = std::vector<StyledText::Run>;
  StyledText text;
  text.setFont(small);
  EXPECT_EQ(text.runs(), Runs());
  text.append("a", red);
  text.append("", blue);
  text.append("b", red);
  text.append("c", blue);
  EXPECT_EQ(text.runs(), (Runs{{"ab", red, {}}, {"c", blue, {}}}));
  text.setFont({"Menlo", 12});
  text.append("d", blue);
  EXPECT_EQ(text.runs().size(), 3U);
  text.setFont(small);
  EXPECT_EQ(text.runs(), (Runs{{"ab", red, small}, {"cd", blue, small}}));
  EXPECT_EQ(text.plain(), "abcd");
}

}  // namespace
}  // namespace tavlen
