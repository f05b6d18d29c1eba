#include "tavlen/foundation/coding/SemanticVersion.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using namespace std::string_view_literals;

/// Ascending; the versions of one row are equal.
const std::vector<std::vector<std::string>> kOrdered = {
    {"0.0.0-0", "0-00", "0.0-0+0"},
    {"0.0.0-0.0"},
    {"0", "0.0", "0.0.0", "000", "0+-"},
    {"0.0.1"},
    {"0.1", "0.1.0", "0.01"},
    {"1.0.0-1"},
    {"1.0.0-2", "1-002"},
    {"1.0.0-10"},
    {"1.0.0-99999999999999999999"},
    {"1.0.0-100000000000000000000", "1-0100000000000000000000"},
    {"1.0.0--"},
    {"1.0.0-01a"},
    {"1.0.0-1a"},
    {"1.0.0-Z"},
    {"1.0.0-alpha", "1-alpha+1"},
    {"1.0.0-alpha.1", "1.0-alpha.1"},
    {"1.0.0-alpha.beta"},
    {"1.0.0-beta"},
    {"1.0.0-beta.2"},
    {"1.0.0-beta.11"},
    {"1.0.0-rc.1"},
    {"1.0.0", "1", "01.00", "1+a-b.001"},
    {"1.2.3"},
    {"1.10"},
    {"14", "14.0", "14.0.0"},
    {"14.0.1"},
    {"9223372036854775806.9223372036854775807"},
    {"9223372036854775807", "0009223372036854775807.0.0+x.y"}};

TEST(SemanticVersion, OrderEqualityAndHashAgree) {
  std::vector<std::pair<std::size_t, SemanticVersion>> versions;
  for (std::size_t row = 0; row < kOrdered.size(); ++row) {
    for (const std::string& text : kOrdered[row]) {
      const auto version = SemanticVersion::parse(text);
      ASSERT_TRUE(version) << text;
      EXPECT_EQ(version->description(), text);
      versions.emplace_back(row, *version);
    }
  }
  for (const auto& [leftRow, left] : versions) {
    for (const auto& [rightRow, right] : versions) {
      SCOPED_TRACE(left.description() + " and " + right.description());
      EXPECT_EQ(left <=> right, std::weak_ordering(leftRow <=> rightRow));
      EXPECT_EQ(left == right, leftRow == rightRow);
      if (leftRow == rightRow) {
        EXPECT_EQ(left.hash(), right.hash());
      }
    }
  }
  EXPECT_EQ(SemanticVersion(), SemanticVersion::parse("0"));
}

TEST(SemanticVersion, OtherTextsDoNotParse) {
  const std::vector<std::string_view> refused[] = {
      {"", ".", "１", "1.", ".1", " 1", "1 ", "v1", "+1", "-1", "1-", "1+", "\n1", "1.x", "1-+",
       "1,0", "0x1", "1e1"},
      {"1_0", "1..2", "1. 2", "1.-2", "1-a+", "1-.a", "1-a.", "1+a.", "1+a+b", "1-a b", "1\0"sv,
       "1.2.3.", "1-a..b", "1+a..b", "1.2.3.4", "1.2.3.-a", "1-\xC3\xA9", "9223372036854775808"},
      {"1.2.18446744073709551616"}};
  for (const auto& row : refused) {
    for (const auto text : row) EXPECT_FALSE(SemanticVersion::parse(text)) << text;
  }
}

TEST(SemanticVersion, IsStoredAsOneText) {
  EXPECT_EQ(decodeJSON<SemanticVersion>("\"1.02-a\"").description(), "1.02-a");
  for (const auto& [text, shown] :
       {std::pair(std::string("1.x"), std::string("1.x")),
        std::pair(std::string(1000, 'v'), std::string(200, 'v') + "…")}) {
    const auto error =
        thrown<DecodingError>([&text = text] { decodeJSON<SemanticVersion>(encodeJSON(text)); });
    ASSERT_TRUE(error) << text;
    EXPECT_EQ(error->which(), DecodingError::Case::dataCorrupted);
    EXPECT_EQ(error->text(), "Invalid version: \"" + shown + "\"");
  }
}

}  // namespace
}  // namespace tavlen
