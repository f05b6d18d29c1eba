#include <gtest/gtest.h>

#include "tavlen/foundation/text/Base64.h"

namespace tavlen {
namespace {

using namespace std::string_literals;

TEST(Base64, isStrict) {
  const struct {
    std::string bytes;
    const char* text;
  } rows[] = {{"", ""},
              {"\0"s, "AA=="},
              {"\xFF", "/w=="},
              {"\xFF\xFF", "//8="},
              {"\xFB\xEF\xBE", "++++"},
              {"abcd", "YWJjZA=="}};
  for (const auto& row : rows) {
    EXPECT_EQ(base64FromBytes(row.bytes), row.text);
    EXPECT_EQ(bytesFromBase64(row.text), row.bytes);
  }
  for (const char* text : {"A", "AA", "AA=", "AA===", "AAA", "AAA==", "AAAA=", "====", "AA==AA==",
                           "AA=A", "A-_A", "AA ==", "\xC3\xA9=="}) {
    EXPECT_EQ(bytesFromBase64(text), std::nullopt) << text;
  }
  EXPECT_EQ(bytesFromBase64(" A\nA\t=\r= ", Base64Blanks::skipped), "\0"s);
}

}  // namespace
}  // namespace tavlen
