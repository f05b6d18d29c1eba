#include "tavlen/foundation/errors/detail/StringTable.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace tavlen {
namespace {

using namespace std::string_view_literals;

struct ValueCase {
  std::string_view table;
  std::string_view value;  // of the key "k"
};

constexpr ValueCase kValueCases[] = {
    {R"("k" = "v";)", "v"},
    {R"(k=v;)", "v"},
    {R"('k' = 'it"s';)", "it\"s"},
    {R"("k";)", "k"},
    {R"(k = "";)", ""},
    {R"("k" = "1"; "other" = "2"; "k" = "3";)", "3"},
    {R"(k = a_$/:.-Z09;)", "a_$/:.-Z09"},
    {R"(k = http://x/;)", "http://x/"},  // a token that has begun takes the slashes
    // Blanks and comments between all tokens.
    {"// one\r/* two **/ \"k\" /**/ = // x\n\t\v\f \"v\"\xE2\x80\xA8/* */;\xE2\x80\xA9 /*/ open",
     "v"},
    {"//c\xE2\x80\xA8k = v;", "v"},
    {"k = \"a\nb // c\";", "a\nb // c"},
    // Escapes.
    {R"(k = "\n\t\r\a\b\f\v\"\\\'";)", "\n\t\r\a\b\f\v\"\\'"},
    {"k = \"a\\\nb\";", "a\nb"},
    {R"(k = "\q\u0041\8\é\U";)", "qu00418éU"},
    {R"(k = "\U41\U00e91\UFEFFx";)",
     "A\u00E9"
     "1\uFEFFx"},
    {R"(k = "\UD83D\UDE00";)", "\U0001F600"},
    {R"(k = "\UD83D\UD83D\UDE00\UDE00\UD83Dx\UD83D";)", "\uFFFD\U0001F600\uFFFD\uFFFDx\uFFFD"},
    {R"(k = "\UD83D\n";)", "\uFFFD\n"},
    {R"(k = "\101\60\0609\7";)",
     "A00"
     "9\a"},
    {R"(k = "\200\241\254\256\276\301\341\365\375\376\777";)",
     "\u00A0\u00A1\u2039\uFB01\u00AC\u02CB\u00C6\u0131\u00FF\uFFFD\uFFFD"},
    {R"(k = "\0";)", "\0"sv}};

TEST(StringTable, ReadsTheTextForm) {
  for (const ValueCase& c : kValueCases) {
    SCOPED_TRACE(c.table);
    const auto table = StringTable::parse(c.table);
    ASSERT_TRUE(table);
    const std::string* value = table->find("k");
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(*value, c.value);
    EXPECT_EQ(table->find("K"), nullptr);
  }
}

TEST(StringTable, ATableMayBeEmpty) {
  for (const std::string_view text : {"", " \n", "// only\n/* comments */"}) {
    const auto table = StringTable::parse(text);
    ASSERT_TRUE(table) << text;
    EXPECT_EQ(table->size(), 0U);
  }
}

TEST(StringTable, OneFaultMakesTheWholeFileUnusable) {
  constexpr std::string_view kBroken[] = {
      "k = v",   "k = v; \"open", "k = \"v\\", "k = v; k2 = 'v\";", "k v;",
      "k = ;",   "= v;",          "k = v;;",   "{ k = v; }",        "k = v w;",
      "k == v;", "k = é;",        "k = v; /",  "k = \xFF;",         "k\0= v;"sv};
  for (const std::string_view text : kBroken) {
    EXPECT_FALSE(StringTable::parse(text)) << testing::PrintToString(text);
  }
}

TEST(StringTable, LongInputIsReadInOneGo) {
  std::string text;
  for (int i = 0; i < 50'000; ++i) text += "/*//*/\"" + std::to_string(i) + "\"=\"\\\\\";";
  const auto table = StringTable::parse(text);
  ASSERT_TRUE(table);
  EXPECT_EQ(table->size(), 50'000U);
  EXPECT_FALSE(StringTable::parse(std::string(1'000'000, '(')));
  EXPECT_FALSE(StringTable::parse("\"" + std::string(1'000'000, '\\')));
}

}  // namespace
}  // namespace tavlen
