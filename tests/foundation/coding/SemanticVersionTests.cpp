#include "tavlen/foundation/coding/SemanticVersion.h"

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tests/support/TableFile.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using namespace std::string_view_literals;

TEST(SemanticVersion, OrderEqualityAndHashAgree) {
  std::vector<std::pair<std::size_t, SemanticVersion>> versions;
  const auto rows = tableFrom("versions.txt", 1);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    for (const std::string& text : rows[row]) {
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
  for (const std::string& text : {std::string("1.x"), std::string(1000, 'v')}) {
    const auto error =
        thrown<DecodingError>([&] { decodeJSON<SemanticVersion>(encodeJSON(text)); });
    ASSERT_TRUE(error) << text;
    EXPECT_EQ(error->which(), DecodingError::Case::dataCorrupted);
    EXPECT_EQ(error->text(), "Invalid version: \"" + text + "\"");
  }
}

}  // namespace
}  // namespace tavlen
