#include <gmock/gmock.h>

#include <functional>
#include <limits>
#include <random>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tests/support/TableFile.h"
#include "tests/support/Thrown.h"
#include "tests/support/WideText.h"

namespace tavlen {
namespace {

using namespace std::string_literals;
using Case = DecodingError::Case;

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

struct Inner {
  std::string n;
  static constexpr auto codedFields() { return std::tuple{requiredField("n", &Inner::n)}; }
  bool operator==(const Inner&) const = default;
};

struct Outer {
  std::vector<Inner> list;
  std::optional<double> maybe;
  static constexpr auto codedFields() {
    return std::tuple{requiredField("list", &Outer::list), optionalField("maybe", &Outer::maybe)};
  }
};

const char* const kNoNumbers[] = {"1e400", "-1e400", "0.00001e405", "1e99999999999999999999",
                                  "01",    "-01",    "1.",          "1.e2",
                                  "1e",    "-",      "1-2",         "--1"};

template <class Integer>
std::string decodedText(const std::string& text) {
  try {
    return std::to_string(decodeJSON<Integer>(text));
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.which(), Case::dataCorrupted);
    return "";
  }
}

TEST(JSONDecoder, ReadsNumbersAsThePlatformDoes) {
  for (const auto& row : tableFrom("numbers.txt", 4)) {
    SCOPED_TRACE(row[0]);
    EXPECT_EQ(decodedText<std::int64_t>(row[0]), row[1]);
    EXPECT_EQ(decodedText<std::uint64_t>(row[0]), row[2]);
    if (row[3].empty()) {
      EXPECT_THROW(decodeJSON<double>(row[0]), DecodingError);
    } else {
      EXPECT_EQ(decodeJSON<double>(row[0]), std::strtod(row[3].c_str(), nullptr));
    }
  }
  for (const char* text : kNoNumbers) {
    EXPECT_EQ(decodedText<std::int64_t>(text) + decodedText<std::uint64_t>(text), "") << text;
    EXPECT_THROW(decodeJSON<double>(text), DecodingError) << text;
  }
}

TEST(JSONDecoder, ReadsStrings) {
  const std::pair<std::string, std::string> cases[] = {
      {R"("")", ""},
      {R"("\"\\\/\b\f\n\r\t")", "\"\\/\b\f\n\r\t"},
      {R"("\u0041\u00e9\u00E9\u20ac\ud83d\ude00\u0000z")", "Aéé€😀\0z"s},
      {"\"\x7F\u2028 plain text longer than eight bytes, é\"",
       "\x7F\u2028 plain text longer than eight bytes, é"}};
  for (const auto& [text, value] : cases) EXPECT_EQ(decodeJSON<std::string>(text), value) << text;
  const std::string bad[] = {R"("\ud83d")", R"("\ude00")", R"("\ud83dx")",     R"("\ud83d\u0041")",
                             R"("\x")",     R"("\u12")",   R"("\u12g4")",      "\"a\nb\"",
                             "\"a\x1F\"",   "\"a\0\""s,    R"("open)",         "\"open with \\",
                             R"("\ud83d\)", "\"\xFF\"",    "\"\xED\xA0\x80\"", "\"\xC0\xAF\""};
  for (const std::string& text : bad)
    EXPECT_THROW(decodeJSON<std::string>(text), DecodingError) << text;
}

TEST(JSONDecoder, TellsTheEncodingByMarkOrZeros) {
  constexpr std::u16string_view kWide = u"[\"é😀\"]";
  for (const std::string& bytes :
       {"\xEF\xBB\xBF[\"é😀\"]"s, bytesOf(kWide, true), bytesOf(kWide, false),
        "\xFE\xFF" + bytesOf(kWide, true), "\xFF\xFE" + bytesOf(kWide, false)}) {
    EXPECT_EQ(decodeJSON<std::vector<std::string>>(bytes).at(0), "é😀");
  }
  for (const std::string& seven :
       {"\0\0\0\x37"s, "7\0\0\0"s, "\0\0\xFE\xFF\0\0\0\x37"s, "\xFE\xFF\0\0\x37\0\0\0"s, "7\0"s}) {
    EXPECT_EQ(decodeJSON<std::int64_t>(seven), 7) << testing::PrintToString(seven);
  }
  for (const std::string& none : {"\xFF\xFE\0\0\x37\0\0\0"s, "\xFF\xFE\x37"s}) {
    EXPECT_THROW(decodeJSON<std::int64_t>(none), DecodingError) << testing::PrintToString(none);
  }
}

/// The kind of a coding error as "keyNotFound: <what is wrong>"; empty without one.
template <class T>
std::string errorOf(const std::string& json) {
  const auto error = thrown<DecodingError>([&] { decodeJSON<T>(json); });
  if (!error) return "";
  const char* const kCases[] = {"keyNotFound", "typeMismatch", "valueNotFound", "dataCorrupted"};
  return kCases[static_cast<int>(error->which())] + ": "s + error->description();
}

TEST(JSONDecoder, SaysWhatIsWrongAndWhere) {
  for (const auto& row : tableFrom("json-errors.txt", 4)) {
    EXPECT_EQ(errorOf<Outer>(row[0]), row[1] + ": " + row[2]);
    const auto error = thrown<DecodingError>([&] { decodeJSON<Outer>("\n " + row[0]); });
    EXPECT_EQ("2:" + row[3], description(error.value().position().value())) << row[0];
  }
  EXPECT_EQ(
      errorOf<Outer>("{\n  \"list\" [] }"),
      "dataCorrupted: The given data was not valid JSON: expected a colon at line 2, column 10");
  EXPECT_TRUE(errorOf<bool>("null").starts_with("typeMismatch")) << "unlike every other type";
}

TEST(JSONDecoder, RefusesMalformedDocuments) {
  const char* cases[] = {"",           "  \n",   "[1,]",    "[,]",     "[1,,2]",   "[1 2]",
                         "[1",         "[1}",    "{",       "{\"a\"}", "{\"a\":}", "{,}",
                         "{\"a\":1,}", "{a:1}",  "{'a':1}", "[] x",    "[][]",     "[tru]",
                         "[nul_]",     "[True]", "[.5]",    "[+1]",    "[NaN]",    "[Infinity]",
                         "/**/[]",     "[1]//",  "[\"a]",   "\v[]",    "[\"\\\"]"};
  for (const char* text : cases) {
    EXPECT_THROW(readJSON(text, [](Decoder& decoder) { decoder.elements([] {}); }), DecodingError)
        << text;
  }
}

TEST(JSONDecoder, SkipsWhatNobodyAsksForUnchecked) {
  const Outer value = decodeJSON<Outer>(
      R"( {"x":[1-2.e,{"deep":["\q",{"}":"]"}],"e":{}}],"list":[{"n":"first","n":5,"l":[[]]}],"list":7,"maybe":null} )");
  ASSERT_EQ(value.list.size(), 1U);
  EXPECT_EQ(value.list[0].n, "first");
  EXPECT_FALSE(value.maybe);
}

TEST(JSONDecoder, HoldsItsDepthLimit) {
  const auto nested = [](std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
  };
  const auto inObject = [&](std::size_t depth) {
    return R"({"unknown":)" + nested(depth) + R"(,"list":[]})";
  };
  EXPECT_NO_THROW(decodeJSON<Outer>(inObject(511)));
  EXPECT_THROW(decodeJSON<Outer>(inObject(512)), DecodingError);
  EXPECT_THROW(decodeJSON<Outer>(inObject(100000)), DecodingError);
  std::function<void(Decoder&)> descend = [&](Decoder& decoder) {
    decoder.elements([&] { descend(decoder); });
  };
  EXPECT_NO_THROW(readJSON(nested(512), [&](Decoder& decoder) { descend(decoder); }));
  EXPECT_THROW(readJSON(nested(513), [&](Decoder& decoder) { descend(decoder); }), DecodingError);
}

TEST(JSON, HoldsItsLimitOfValues) {
  const std::vector<double> most(limits::kJSONValues - 1);  // and the array itself
  const std::string text = encodeJSON(most);
  EXPECT_EQ(decodeJSON<std::vector<double>>(text), most);
  std::vector<double> more = most;
  more.push_back(0);
  const std::string limit = "more than " + std::to_string(limits::kJSONValues) + " values";
  const std::string unwritten = messageOf<EncodingError>([&] { encodeJSON(more); });
  EXPECT_NE(unwritten.find(limit), std::string::npos) << unwritten;
  std::size_t bytes = 0;
  writeJSON(more, [&](std::string_view piece) { bytes += piece.size(); });  // no document
  EXPECT_EQ(bytes, 2 * more.size() + 1);
  const std::string refused =
      messageOf<DecodingError>([&] { decodeJSON<std::vector<double>>("[0," + text.substr(1)); });
  EXPECT_NE(refused.find(limit), std::string::npos) << refused;
}

TEST(JSONEncoder, PassesALongTextInPieces) {
  // With a key, a value or a text of several bytes at each end of a piece.
  std::vector<std::map<std::int64_t, std::string>> rows;
  for (std::size_t i = 0; i < 20'000; ++i) {
    const auto key = static_cast<std::int64_t>(i);
    rows.push_back({{key, "\u00e9" + std::string(i % 7, 'x')}, {-1, ""}});
  }
  std::string text;
  std::vector<std::size_t> sizes;
  writeJSON(rows, [&](std::string_view piece) {
    EXPECT_TRUE(isValidUTF8(piece));
    sizes.push_back(piece.size());
    text += piece;
  });
  EXPECT_EQ(text, encodeJSON(rows));
  ASSERT_GT(sizes.size(), 4U);
  sizes.pop_back();
  EXPECT_THAT(sizes, testing::Each(testing::AllOf(testing::Ge(JSONEncoder::kPieceBytes),
                                                  testing::Lt(JSONEncoder::kPieceBytes + 32))));
}

TEST(JSONDecoder, StandsWhereItStoodAfterAFailedAttempt) {
  bool first = true;
  std::vector<std::string> texts;
  readJSON(R"([[["a",1],"b"]])", [&](Decoder& decoder) {
    decoder.elements([&] {
      const auto readAll = [&] { decoder.elements([&] { texts.push_back(decoder.string()); }); };
      first = decoder.attempt(readAll);
      decoder.elements([&] {
        if (decoder.attempt([&] { texts.push_back(decoder.string()); })) return;
        decoder.elements([&] {
          texts.push_back(decoder.attempt([&] { decoder.integer(); }) ? "number"
                                                                      : decoder.string());
        });
      });
    });
  });
  EXPECT_FALSE(first);
  EXPECT_EQ(texts, (std::vector<std::string>{"a", "number", "b"}));
}

TEST(JSONDecoder, ReadsDecimalKeys) {
  using Table = std::map<std::int64_t, bool>;
  EXPECT_EQ(decodeJSON<Table>(R"({"7":true,"-1":false,"+2":true,"-0":true,"01":true,"1":false})"),
            (Table{{7, true}, {-1, false}, {2, true}, {0, true}, {1, true}}));
  for (const char* key : {" 1", "1 ", "", "-", "--1", "+-1", "1.0", "1e1", "0x1", "1_0", "１",
                          "9223372036854775808"}) {
    const auto error =
        thrown<DecodingError>([&] { decodeJSON<Table>("{\"" + std::string(key) + "\":true}"); });
    ASSERT_TRUE(error) << key;
    EXPECT_EQ(error->which(), Case::typeMismatch);
    EXPECT_EQ(error->codingPath().text(), key);
  }
}

TEST(JSONDecoder, LogsTheKeysThatItIgnores) {
  const std::string json =
      "{\"items\":[{\"type\":\"A\",\"nme\":{\"nme\":1}},null,\n"
      "  {\"\u00E4\": 1, \"name\":\"n\", \"n\\u0061me\":0, \"type\":\"A\", \"type\":2}],\r\n"
      "\"numbers\":{\"1\":1,\"01\":2}}";
  struct Item {
    std::optional<std::string> name;
    static constexpr auto codedFields() { return std::tuple{optionalField("name", &Item::name)}; }
  };
  std::map<std::int64_t, std::int64_t> numbers;
  IgnoredKeys ignored;
  readJSON(
      json,
      [&](Decoder& decoder) {
        decoder.members([&](std::string_view key) {
          if (key == "numbers") return decode(decoder, numbers);
          decoder.elements([&] {
            if (decoder.null()) return;
            decoder.attempt([&] { decoder.members([&](std::string_view) { decoder.string(); }); });
            decoder.peekString("type");
            Item item;
            decode(decoder, item);
          });
        });
      },
      ignored);
  std::string text;
  for (const IgnoredKey& key : ignored.keys)
    text += description(key.position) + " " + key.path + ": " + std::string(key.code) + ": " +
            key.text + "\n";
  EXPECT_EQ(
      text,
      "1:23 items[0].nme: unknown-key: unknown key \"nme\", which the next edit drops; did you "
      "mean \"name\"?\n"
      "2:4 items[2].\u00E4: unknown-key: unknown key \"\u00E4\", which the next edit drops; known "
      "are type, name\n"
      "2:24 items[2].name: repeated-key: repeated key \"name\"; the first one counts, and the "
      "next edit drops this one\n"
      "2:51 items[2].type: repeated-key: repeated key \"type\"; the first one counts, and the "
      "next edit drops this one\n"
      "3:18 numbers.01: repeated-key: repeated key \"01\"; the first one counts, and the next "
      "edit drops this one\n");
  std::string many = "[";
  for (std::size_t i = 0; i < IgnoredKeys::kMost + 7; ++i) many += "{\"a\":1},";
  many.back() = ']';
  IgnoredKeys most;
  decodeJSON<std::vector<Item>>(many, most);
  EXPECT_EQ(most.keys.size(), IgnoredKeys::kMost);
  EXPECT_EQ(most.others, 7U);
}

}  // namespace
}  // namespace tavlen
