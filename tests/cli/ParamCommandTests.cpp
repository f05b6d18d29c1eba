#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string number(int value) {
  return R"({"type":"_ValueParameter<Int64>","value":)" + std::to_string(value) + "}";
}

std::string arrayOf(const std::string& items) {
  return R"({"type":"Array","items":[)" + items + "]}";
}

std::string pairOf(const std::string& key, const std::string& value) {
  return R"({"key":)" + key + R"(,"value":)" + value + "}";
}

std::string dictionaryOf(const std::string& pairs) {
  return R"({"type":"Dictionary","items":[)" + pairs + "]}";
}

/// The tweak T with the hook -[A a:b:]: argument 0 is an array of 1 and 2, argument 1 a dictionary
/// whose one value is an array of 3.
class ParamCommandTest : public CommandTest {
 protected:
  ParamCommandTest() { store(kFirst, kSecond); }

  void store(const std::string& first, const std::string& second) const {
    writeTweak("T", hookJSON("a:b:", "v32@0:8@16@24", R"("0":)" + first + R"(,"1":)" + second));
  }
  std::string manifest() const { return contents("T/Manifest.json"); }
  Result param(const std::string& what, const std::vector<std::string>& rest) const {
    std::vector<std::string> words = {"param", what, "T", "-[A a:b:]"};
    words.insert(words.end(), rest.begin(), rest.end());
    return run(words);
  }
  std::string stored(const std::string& address) const {
    return param("get", {address, "--json"}).out;
  }

  const std::string kFirst = arrayOf(number(1) + "," + number(2));
  const std::string kSecond = dictionaryOf(pairOf(number(7), arrayOf(number(3))));
};

TEST_F(ParamCommandTest, GetsTheHooksParametersAndSingleOnes) {
  EXPECT_EQ(param("get", {}).out,
            "ADDRESS      VALUE\n0.0          int:1\n0.1          int:2\n1.0.key      int:7\n"
            "1.0.value.0  int:3\n");
  EXPECT_EQ(param("get", {"--json"}).out, R"({"0":)" + kFirst + R"(,"1":)" + kSecond + "}\n");
  EXPECT_EQ(param("get", {"1.0.value.0"}).out, "int:3\n");
  EXPECT_EQ(param("get", {"0"}).out, "json:" + kFirst + "\n");
  EXPECT_EQ(stored("1.0.value"), arrayOf(number(3)) + "\n");
}

TEST_F(ParamCommandTest, EveryKindIsWrittenAsItIsShown) {
  struct Case {
    std::string value;
    std::string json;
    std::string shown;  // where not as it was written
  };
  const std::vector<Case> cases = {
      {"bool:true", R"({"type":"_ValueParameter<Bool>","value":true})", ""},
      {"int:-9223372036854775808",
       R"({"type":"_ValueParameter<Int64>","value":-9223372036854775808})", ""},
      {"uint:18446744073709551615",
       R"({"type":"_ValueParameter<UInt64>","value":18446744073709551615})", ""},
      {"double:0.5", R"({"type":"_ValueParameter<Double>","value":0.5})", ""},
      {"double:-1e3", R"({"type":"_ValueParameter<Double>","value":-1000})", "double:-1000.0"},
      {"string:", R"({"type":"_ValueParameter<String>","value":""})", ""},
      {"string:a: -b\n", R"({"type":"_ValueParameter<String>","value":"a: -b\n"})",
       "string:a: -b\\n"},
      {"url:x://y?z=%20", R"({"type":"URL","string":"x:\/\/y?z=%20"})", ""},
      {"date:2026-01-31T12:00:00Z", R"({"type":"Date","date":791553600})", ""},
      {"date:2026-01-31T12:00:00.25+01:30", R"({"type":"Date","date":791548200.25})",
       "date:2026-01-31T10:30:00.25Z"},
      {"date:2000-02-29T23:59:59.1-0015", R"({"type":"Date","date":-26437500.9})",
       "date:2000-03-01T00:14:59.10000000149011612Z"},
      {"color:#ff000080",
       R"({"type":"Color","red":1,"green":0,"blue":0,"alpha":0.5019607843137255})", ""},
      {"color:#0033FF", R"({"type":"Color","red":0,"green":0.2,"blue":1,"alpha":1})",
       "color:#0033ff"},
      {R"(json:{"type":"Color","red":2,"green":0.21,"blue":0,"alpha":1})",
       R"({"type":"Color","red":2,"green":0.21,"blue":0,"alpha":1})", ""},
      {"class:K", R"({"type":"Class","name":"K"})", ""},
      {"selector:a:b:", R"({"type":"Selector","name":"a:b:"})", ""},
      {"protocol:P", R"({"type":"Protocol","name":"P"})", ""},
      {"code:x + 1", R"({"type":"Code","code":"x + 1"})", ""},
      {"nil", R"({"type":"Nil"})", ""},
      {R"(json:{"items":[],"type":"Array"})", arrayOf(""), "json:" + arrayOf("")},
  };
  for (const Case& kind : cases) {
    EXPECT_EQ(param("set", {"-1", kind.value}).err, "") << kind.value;
    EXPECT_EQ(stored("-1"), kind.json + "\n");
    EXPECT_EQ(param("get", {"-1"}).out, (kind.shown.empty() ? kind.value : kind.shown) + "\n");
  }
}

TEST_F(ParamCommandTest, MalformedArgumentsAreWrongUsage) {
  struct Case {
    std::vector<std::string> words;
    std::string error;
  };
  std::vector<Case> cases = {
      {{"insert", "0", "nil"}, "ADDRESS: 0: expected the address of an item or a pair"},
      {{"insert", "0.x", "nil"}, "ADDRESS: "},
      {{"remove", "0.0.key"}, "ADDRESS: "},
      {{"remove", "0.end"}, "ADDRESS: "},
      {{"move", "0.0", "x"}, "TO: x: expected an index"},
      {{"insert", "1.end", "nil", "--key", "int:x"}, "--key: int:x: expected a whole number"},
      {{"set", "0"}, "VALUE is required"},
  };
  for (const std::string address : {"x", "0.", ".0", "0..1", "0.key", "0.1.key.value", "0.1.keys",
                                    "0x1", "+1", "9223372036854775808", "0.0 ", "-1.-"}) {
    cases.push_back(
        {{"set", address, "nil"}, "ADDRESS: " + address + ": expected an address such"});
  }
  std::string deep = "0";
  for (int i = 0; i < 600; ++i) deep += ".0";
  cases.push_back({{"get", deep}, "ADDRESS: 0.0"});
  const std::vector<std::pair<std::string, std::string>> values = {
      {"nil:", "a value that begins with"},
      {"text", "a value that begins with"},
      {"int", "a value that begins with"},
      {"bool:yes", "true or false"},
      {"int:1.5", "a whole number"},
      {"int:9223372036854775808", "a whole number"},
      {"uint:-1", "a whole number from 0"},
      {"double:", "a finite number"},
      {"double:inf", "a finite number"},
      {"double:1e999", "a finite number"},
      {"double:1 ", "a finite number"},
      {"url:", "a URL"},
      {"date:2026-02-29T12:00:00Z", "a date such as"},
      {"date:2026-01-31T12:00:00", "a date such as"},
      {"date:2026-01-31T12:00:00.Z", "a date such as"},
      {"date:2026-01-31T24:00:00Z", "a date such as"},
      {"date:2026-01-31T12:00:00ZZ", "a date such as"},
      {"color:#ff00", "a color such as"},
      {"color:#ff00zz", "a color such as"},
      {"color:#-1-1-1", "a color such as"},
      {"class:", "a class's name"},
      {"data:", "the path of a file"},
      {"image:a/..", "the path of a file"},
      {"json:", "a parameter as manifests hold it"},
      {R"(json:{"type":"X"})", "a parameter as manifests hold it: type: unknown kind"},
      {"string:\xFF", "UTF-8"},
  };
  for (const auto& [value, expected] : values) cases.push_back({{"set", "-1", value}, "VALUE: "});
  const std::string before = manifest();
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const Case& wrong = cases[i];
    const Result result = param(wrong.words.front(), {wrong.words.begin() + 1, wrong.words.end()});
    EXPECT_EQ(result.status, 2) << wrong.words.back();
    EXPECT_THAT(result.err, StartsWith(wrong.error));
    const std::size_t firstValue = cases.size() - values.size();
    if (i >= firstValue) {
      EXPECT_THAT(result.err, HasSubstr(": expected " + values[i - firstValue].second));
    }
  }
  EXPECT_EQ(manifest(), before);
}

TEST_F(ParamCommandTest, ItemsAreInsertedRemovedAndMoved) {
  struct Case {
    std::vector<std::string> words;
    std::string first;
    std::string second;
  };
  const std::string nil = R"({"type":"Nil"})";
  const std::string one = number(1);
  const std::string two = number(2);
  const std::string pair = pairOf(number(7), arrayOf(number(3)));
  const std::vector<Case> cases = {
      {{"insert", "0.0", "nil"}, arrayOf(nil + "," + one + "," + two), kSecond},
      {{"insert", "0.2", "nil"}, arrayOf(one + "," + two + "," + nil), kSecond},
      {{"insert", "1.0.value.end", "nil"},
       kFirst,
       dictionaryOf(pairOf(number(7), arrayOf(number(3) + "," + nil)))},
      {{"insert", "1.0", "nil", "--key", "int:1"},
       kFirst,
       dictionaryOf(pairOf(one, nil) + "," + pair)},
      {{"remove", "0.0"}, arrayOf(two), kSecond},
      {{"remove", "1.0"}, kFirst, dictionaryOf("")},
      {{"move", "0.0", "1"}, arrayOf(two + "," + one), kSecond},
      {{"move", "0.1", "0"}, arrayOf(two + "," + one), kSecond},
      {{"set", "1.0.key", "nil"}, kFirst, dictionaryOf(pairOf(nil, arrayOf(number(3))))},
      {{"set", "0.1", "nil"}, arrayOf(one + "," + nil), kSecond},
  };
  for (const Case& edit : cases) {
    EXPECT_EQ(param(edit.words.front(), {edit.words.begin() + 1, edit.words.end()}).err, "");
    EXPECT_EQ(param("get", {"--json"}).out,
              R"({"0":)" + edit.first + R"(,"1":)" + edit.second + "}\n");
    store(kFirst, kSecond);
  }
  EXPECT_EQ(param("remove", {"0"}).status, 0);
  EXPECT_EQ(param("get", {"--json"}).out, R"({"1":)" + kSecond + "}\n");
}

TEST_F(ParamCommandTest, SaysWhatIsWrongWhereAndChangesNothing) {
  struct Case {
    std::vector<std::string> words;
    std::string error;  // behind the hook
  };
  const std::vector<Case> cases = {
      {{"get", "-1"}, "-1: Parameter not found at index -1 in tweak file:///"},
      {{"get", "0.2"}, "0.2: Index out of bounds: 2\n"},
      {{"get", "0.-1"}, "0.-1: Index out of bounds: -1\n"},
      {{"set", "0.0.key", "nil"},
       "0.0.key: Parameter type mismatch: expected DictionaryParameter but found ArrayParameter\n"},
      {{"set", "1.-1", "nil"},
       "1.-1: Parameter type mismatch: expected ArrayParameter but found DictionaryParameter\n"},
      {{"insert", "0.3", "nil"}, "0.3: Index out of bounds: 3\n"},
      {{"insert", "0.-1", "nil"}, "0.-1: Index out of bounds: -1\n"},
      {{"insert", "0.0.0", "nil"},
       "0.0.0: Parameter type mismatch: expected ArrayParameter but found "
       "_ValueParameter<Int64>\n"},
      {{"insert", "1.end", "nil"}, "1.end: a dictionary's pair needs a key; --key gives it\n"},
      {{"insert", "0.end", "nil", "--key", "nil"}, "0.end: an array's item has no key\n"},
      {{"remove", "0.2"}, "0.2: Index out of bounds: 2\n"},
      {{"remove", "7"}, "7: Parameter not found at index 7 in tweak file:///"},
      {{"move", "0.0", "2"}, "0.0: Index out of bounds: 2\n"},
  };
  const std::string before = manifest();
  for (const Case& wrong : cases) {
    const Result result = param(wrong.words.front(), {wrong.words.begin() + 1, wrong.words.end()});
    EXPECT_EQ(result.status, 1) << wrong.error;
    EXPECT_THAT(result.err, StartsWith("tavlen: error: T: -[A a:b:]: " + wrong.error));
    EXPECT_EQ(result.out, "");
  }
  EXPECT_EQ(manifest(), before);
}

TEST_F(ParamCommandTest, FilesBecomeResources) {
  namespace fs = std::filesystem;
  write("in/a.bin", "one");
  EXPECT_EQ(param("set", {"0.0", "data:in/a.bin"}).err, "");
  EXPECT_EQ(contents("T/Resources/a.bin"), "one");
  EXPECT_EQ(stored("0.0"), "{\"type\":\"Data\",\"filename\":\"a.bin\"}\n");
  EXPECT_EQ(param("set", {"-1", "image:in/a.bin"}).err,
            "tavlen: warning: in/a.bin: is no PNG or JPEG image\n")
      << "the same bytes are there";
  // Two files of one name have one place.
  write("in/2/a.bin", "another");
  EXPECT_EQ(param("insert", {"1.end", "data:in/a.bin", "--key", "data:in/2/a.bin"}).status, 1);
  EXPECT_EQ(param("set", {"0.0", R"(data:in/a\b)"}).status, 2) << "no archive could hold it";

  // Nothing is left of what fails, and no other file is overwritten unasked.
  write("in/a.bin", "two");
  write("in/b.bin", "b");
  const std::string before = manifest();
  EXPECT_EQ(param("set", {"-1", "data:in/a.bin"}).err,
            "tavlen: error: T: -[A a:b:]: -1: Resources/a.bin is there with other contents; "
            "--replace overwrites it\n");
  EXPECT_EQ(param("set", {"0.9", "data:in/b.bin"}).status, 1);
  EXPECT_EQ(param("insert", {"0.9", "data:in/b.bin"}).status, 1);
  EXPECT_THAT(param("set", {"0.0", "data:in/none"}).err, HasSubstr("in/none"));
  EXPECT_EQ(param("set", {"0.0", "data:in"}).status, 1) << "a folder";
  EXPECT_EQ(manifest(), before);
  EXPECT_EQ(contents("T/Resources/a.bin"), "one");
  EXPECT_FALSE(fs::exists(folder() / "T/Resources/b.bin"));
  EXPECT_EQ(param("set", {"-1", "data:in/a.bin", "--replace"}).err, "");
  EXPECT_EQ(contents("T/Resources/a.bin"), "two");

  // A link in the resources is not followed to the outside.
  write("outside", "kept");
  fs::create_symlink("../../outside", folder() / "T/Resources/b.bin");
  EXPECT_EQ(param("set", {"-1", "data:in/b.bin", "--replace"}).status, 1);
  EXPECT_EQ(contents("outside"), "kept");
}

}  // namespace
}  // namespace tavlen
