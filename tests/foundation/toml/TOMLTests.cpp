#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <functional>
#include <limits>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/toml/TOMLReader.h"
#include "tavlen/foundation/toml/TOMLWriter.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using Table = TOMLNode::Table;
using Array = TOMLNode::Array;

TOMLNode node(TOMLNode::Value value) { return {std::move(value), {}}; }

TOMLNode date(double seconds) { return node(Date{seconds}); }

/// The keys and the places of all values: "a@1:1=1:5 b@2:1=2:5{c@...}".
std::string outline(const Table& table);

std::string outline(const TOMLNode& node) {
  std::string text = description(node.position);
  if (const auto* table = std::get_if<Table>(&node.value)) text += "{" + outline(*table) + "}";
  if (const auto* array = std::get_if<Array>(&node.value)) {
    for (const TOMLNode& item : *array) text += "," + outline(item);
  }
  return text;
}

std::string outline(const Table& table) {
  std::string text;
  for (const auto& [key, value, position] : table)
    text += (text.empty() ? "" : " ") + key + "@" + description(position) + "=" + outline(value);
  return text;
}

TEST(TOML, ValuesHaveTheOrderAndThePlacesOfTheText) {
  EXPECT_EQ(outline(readTOML("\xEF\xBB\xBFz = 1\nb.y = 2 # \xC3\xA9\n\"\xC3\xA9\".x = { u = [3,\n"
                             " 4], t = 5 }\nb.a = 6\n[[h]]\nr.q = 7\n[c.d]\n[[h]]\n[h.s]\n")),
            "z@1:1=1:5 b@2:1=2:1{y@2:3=2:7 a@5:3=5:7} "
            "\xC3\xA9@3:1=3:1{x@3:5=3:9{u@3:11=3:15,3:16,4:2 t@4:6=4:10}} "
            "h@6:3=6:1,6:1{r@7:1=7:1{q@7:3=7:7}},9:1{s@10:4=10:1{}} c@8:2=8:1{d@8:4=8:1{}}");
}

std::string repeated(std::size_t count, const std::function<std::string(std::size_t)>& element) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += element(i);
  return text;
}

std::string repeated(std::size_t count, const std::string& element) {
  return repeated(count, [&](std::size_t) { return element; });
}

TEST(TOML, RefusesWhatIsMalformedOrTooExpensive) {
  const std::string deep = "nested deeper than 512 tables and arrays";
  const auto numbered = [](const std::string& begin, const std::string& end) {
    return repeated(100'000,
                    [&](std::size_t i) { return begin + std::to_string(100'000 + i) + end; });
  };
  const std::pair<std::string, std::string> cases[] = {
      {"a = 1\nb.c = 2\nb.c.d = 3\n", "3:3: Error while parsing key-value pair: cannot redefine"},
      {"a = \"\xC3\xA9\xE9\"", "1:7: is not UTF-8"},
      {{"\xFF\xFEz\0", 4}, "1:1: is not UTF-8"},
      {"a = 1\nb = \"\xC3\xA9\r\n", "2:8: expected '\"' to end the string that began at 2:5"},
      {"a = '''\nb", "2:2: expected ''''' to end the string that began at 1:5"},
      {"a = tru\nb = \"", "1:8: Error while parsing boolean: expected 'true'"},
      {"a = 9223372036854775808",
       "1:24: Error while parsing decimal integer: '9223372036854775808'"},
      {"a = 1\n[ &]", "2:3: Error while parsing key: expected bare key starting character"},
      {"a = [2001-01-01 0 [", "1:19: unexpected '['"},
      {"a = 2001-01-01 \"\xC3\xA9\"", "1:16: unexpected '\"'"},
      {"a = 1\n\xC3\xA9 = 2", "2:1: expected ASCII outside of strings"},
      {"a = \"\"\"\n\\ \n \xC3\xA9\"\"\"", "3:2: expected ASCII after a backslash"},
      {"a = 1e999", "1:10: Error while parsing"},
      {"a = 2026-01-31T12:00:00", "1:5: expected an offset after the date and time"},
      {"a = [2026-01-31]", "1:6: expected a point in time with an offset"},
      {"a = 12:00:00", "1:5: expected a point in time with an offset"},
      {"a" + repeated(50'000, ".a") + " = 1", "1:100003: " + deep},
      {"[a" + repeated(50'000, " . a") + "]", "1:200003: " + deep},
      {"a = " + repeated(513, "["), "1:517: " + deep},
      {"[x]\na = " + repeated(200, "{ a.b.c = "), "2:1705: " + deep},
      {"a = [" + repeated(1'000'000, "0,"), "1:2000003: more than 1000000 values"},
      {std::string((16 << 20) + 1, ' '), "1:1: more than 16777216 bytes"},
      {numbered("a", ".b = 0\n"), "65537:11: too many dotted keys"},
      {numbered("[[", "]]\n"), "65537:9: too many dotted keys"},
  };
  for (const auto& [text, message] : cases) {
    const std::string& document = text;  // clang 14 captures no structured bindings
    const std::string found = messageOf<TOMLError>([&] { readTOML(document); });
    EXPECT_EQ(found.substr(0, message.size()), message) << text.substr(0, 40);
  }
}

TEST(TOML, TextsAndLongDocumentsAreNotTakenForDeepOnes) {
  const std::string brackets = repeated(600, "[{.");
  const std::string quotes[] = {"\"\\\"" + brackets + "\\\\\"", "'" + brackets + "\\'",
                                "\"\"\"\"\\\"\"\"\n" + brackets + "\"\"\"\"\"",
                                "'''''\n" + brackets + "''''"};
  std::string text = "# " + brackets + "\n";
  for (const std::string& quoted : quotes)
    text += "[[a]]\nb.0 = " + quoted + " # " + brackets + "\nb.'" + brackets + "' = [{}]\n";
  // As many hooks as a document of average hooks has.
  for (int i = 0; i < 20'000; ++i) text += "[[a]]\nb.0 = [1]\nb.1 = {c=2}\nb.2 = 1.5\n[a.c]\n";
  EXPECT_EQ(std::get<Array>(readTOML(text)[0].value.value).size(), 20'004);
}

/// Whether two values are the same to the bit; all NaN are alike.
bool areSame(const TOMLNode& left, const TOMLNode& right);

bool areSame(double left, double right) {
  return std::isnan(left) ? std::isnan(right)
                          : left == right && std::signbit(left) == std::signbit(right);
}
bool areSame(Date left, Date right) {
  return areSame(left.secondsSinceReferenceDate, right.secondsSinceReferenceDate);
}
bool areSame(const TOMLNode::Member& left, const TOMLNode::Member& right) {
  return left.key == right.key && areSame(left.value, right.value);
}
template <class Item>
bool areSame(const std::vector<Item>& left, const std::vector<Item>& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](const Item& one, const Item& other) { return areSame(one, other); });
}
template <class Plain>
bool areSame(const Plain& left, const Plain& right) {
  return left == right;
}
bool areSame(const TOMLNode& left, const TOMLNode& right) {
  return std::visit(
      [&]<class Value>(const Value& value) {
        const auto* other = std::get_if<Value>(&right.value);
        return other != nullptr && areSame(value, *other);
      },
      left.value);
}

TEST(TOML, WritesWhatReadsBackToTheBit) {
  using namespace std::string_literals;
  using Limits = std::numeric_limits<double>;
  const struct {
    TOMLNode value;
    std::string text;
  } cases[] = {
      {node("a\tb \xC3\xA9"s), "\"a\\tb \xC3\xA9\""},
      {node("\0\x7F\r\xE2\x80\xAE\xEF\xBB\xBF\xF0\x9F\x98\x80"s),
       "\"\\u0000\\u007f\\r\\u202e\\ufeff\xF0\x9F\x98\x80\""},
      {node("say \"a\\b\""s), "'say \"a\\b\"'"},
      {node("it's \"a\""s), "\"it's \\\"a\\\"\""},
      {node("\n"s), "\"\"\"\n\n\"\"\""},
      {node("a \n\t\"\"\"\t\n\r\n\\'''\""s),
       "\"\"\"\na\\u0020\n\t\\\"\\\"\"\\t\n\\r\n\\\\'''\\\"\"\"\""},
      {node(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808"},
      {node(-0.0), "-0.0"},
      {node(5e-324), "5e-324"},
      {node(Limits::max()), "1.7976931348623157e+308"},
      {node(-Limits::infinity()), "-inf"},
      {node(-Limits::quiet_NaN()), "nan"},
      {node(true), "true"},
      {date(-63082368000), "0002-01-01T00:00:00Z"},
      {date(0.25), "2001-01-01T00:00:00.25Z"},
      {date(-0.25), "2000-12-31T23:59:59.75Z"},
      {node(Array{}), "[]"},
      {node(Table{}), "{}"},
      {node(Array{node(Table{{"", node(std::int64_t{1}), {}}, {"a.b", node(1.0), {}}})}),
       "[{ \"\" = 1, \"a.b\" = 1.0 }]"},
      {node(Array{node(std::string(90, 'x')), node(Array{node(false)}), node("a\nb"s)}),
       "[\n  \"" + std::string(90, 'x') + "\",\n  [false],\n  \"\"\"\na\nb\"\"\",\n]"},
  };
  for (const auto& [value, text] : cases) {
    std::string written;
    TOMLWriter(written).member("k", value);
    EXPECT_EQ(written, "k = " + text + "\n");
    EXPECT_TRUE(areSame(readTOML(written)[0].value, value)) << text;
    const std::string line = lineFromTOML(value);
    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_TRUE(areSame(readTOML("k = " + line)[0].value, value)) << line;
  }
  EXPECT_FALSE(hasTOMLForm(Date{-0.0}) || hasTOMLForm(Date{1e12}) || hasTOMLForm(Date{-0.1}) ||
               hasTOMLForm(Date{1e8 + 0.1}));
  std::string out;
  EXPECT_THROW(TOMLWriter(out).member("k", node("\xFF"s)), EncodingError);
  EXPECT_THROW(TOMLWriter(out).member("k", date(-0.1)), EncodingError);
}

TEST(TOML, LongTablesAreWrittenWithDottedKeys) {
  const std::string x(95, 'x');
  const TOMLNode inner = node(Table{{"e", node(x), {}}});
  const TOMLNode outer = node(Table{
      {"b c", node(Table{{"d", inner, {}}, {"f", node(true), {}}}), {}}, {"g", node(Table{}), {}}});
  const auto written = [&](TOMLWriter::DottedKeys dottedKeys) {
    std::string text;
    TOMLWriter writer(text, dottedKeys);
    writer.comment("a\n\x1b");
    writer.table("t");
    writer.member("a", outer);
    writer.spreadMember("h", node(Table{{"0", node(true), {}}}));
    EXPECT_EQ(writer.dottedKeyCount(), dottedKeys == TOMLWriter::DottedKeys::allowed ? 4 : 0);
    EXPECT_TRUE(areSame(std::get<Table>(readTOML(text)[0].value.value)[0].value, outer));
    return text;
  };
  EXPECT_EQ(written(TOMLWriter::DottedKeys::allowed),
            "# a\\n\\x1b\n\n[t]\na.\"b c\".d = { e = \"" + x +
                "\" }\na.\"b c\".f = true\na.g = {}\nh.0 = true\n");
  EXPECT_EQ(written(TOMLWriter::DottedKeys::avoided),
            "# a\\n\\x1b\n\n[t]\na = { \"b c\" = { d = { e = \"" + x +
                "\" }, f = true }, g = {} }\nh = { 0 = true }\n");
}

}  // namespace
}  // namespace tavlen
