#include "tavlen/foundation/json/JSONEncoder.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using namespace std::string_literals;

TEST(JSONEncoder, EscapesAsThePlatformDoes) {
  const std::pair<std::string, std::string> cases[] = {
      {"", R"("")"},
      {"a\x1F/\x7F\u2028\"", "\"a\\u001f\\/\x7F\u2028\\\"\""},
      {"\0\a\b\t\n\v\f\r\x0E"s, R"("\u0000\u0007\b\t\n\u000b\f\r\u000e")"},
      {"plain text of more than eight bytes / \\ é 😀\uFEFF\u0085",
       "\"plain text of more than eight bytes \\/ \\\\ é 😀\uFEFF\u0085\""}};
  for (const auto& [text, json] : cases) {
    EXPECT_EQ(encodeJSON(text), json);
    EXPECT_EQ(decodeJSON<std::string>(json), text);
  }
}

TEST(JSONEncoder, WritesNumbers) {
  const std::pair<double, const char*> reals[] = {{1.0, "1"}, {-0.0, "-0"}, {1e-5, "1e-05"}};
  for (const auto& [value, text] : reals) EXPECT_EQ(encodeJSON(value), text);
  EXPECT_EQ(encodeJSON(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(encodeJSON(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
  EXPECT_EQ(encodeJSON(Date::since1970(1700000000.25)), "721692800.25");
}

TEST(JSONEncoder, WritesContainers) {
  EXPECT_EQ(encodeJSON(std::vector<std::int64_t>{}), "[]");
  EXPECT_EQ(encodeJSON(std::vector<std::optional<std::int64_t>>{1, std::nullopt, 2}), "[1,null,2]");
  EXPECT_EQ(encodeJSON(std::map<std::int64_t, bool>{}), "{}");
  EXPECT_EQ(encodeJSON(std::map<std::int64_t, bool>{{10, true}, {-1, false}}),
            R"({"-1":false,"10":true})");
}

TEST(JSONEncoder, RefusesWhatJSONCannotHold) {
  const auto failure = [](const auto& value) { return messageOf([&] { encodeJSON(value); }); };
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(failure(std::map<std::int64_t, double>{{3, -kInfinity}}),
            "3: Unable to encode Double.-inf directly in JSON.");
  EXPECT_EQ(failure(std::numeric_limits<double>::quiet_NaN()),
            "Unable to encode Double.nan directly in JSON.");
  EXPECT_EQ(failure(std::vector<std::string>{"fine", "a\xFF"}),
            "[1]: Could not represent a\uFFFD as JSON");
  for (const std::size_t depth : {511U, 512U}) {
    std::string out;
    JSONEncoder encoder(out);
    const auto nest = [&] {
      for (std::size_t i = 0; i < depth; ++i) encoder.beginArray(1);
    };
    if (depth == 511) {
      EXPECT_NO_THROW(nest());
    } else {
      EXPECT_THROW(nest(), EncodingError);
    }
  }
}

TEST(JSONEncoder, EveryTextSurvivesTheRoundTrip) {
  std::mt19937_64 random(20010101);
  for (int i = 0; i < 20000; ++i) {
    std::string text;
    for (auto length = random() % 40; length > 0; --length)
      text += static_cast<char>(random() % 128);
    ASSERT_EQ(decodeJSON<std::string>(encodeJSON(text)), text);
  }
}

}  // namespace
}  // namespace tavlen
