#include <gmock/gmock.h>

#include <sstream>

#include "tavlen/foundation/json/JSONEncoder.h"
#include "tests/cli/CommandTest.h"
#include "tests/tweaktext/RandomManifest.h"

namespace tavlen {
namespace {

using testing::HasSubstr;

std::string number(int value) {
  return R"({"type":"_ValueParameter<Int64>","value":)" + std::to_string(value) + "}";
}

std::string arrayOf(const std::string& items) {
  return R"({"type":"Array","items":[)" + items + "]}";
}

std::string dictionaryOf(const std::string& key, const std::string& value) {
  return R"({"type":"Dictionary","items":[{"key":)" + key + R"(,"value":)" + value + "}]}";
}

/// The tweak ./T with the hook -[A a:b:]: argument 0 is an array of 1 and 2, argument 1 a
/// dictionary whose one value is an array of 3.
class ParamCommandTest : public CommandTest {
 protected:
  ParamCommandTest() { store(); }

  void store() const {
    writeTweak("./T", hookJSON("a:b:", "@32@0:8@16@24", R"("0":)" + kFirst + R"(,"1":)" + kSecond));
  }
  std::string manifest() const { return contents("./T/Manifest.json"); }
  Result param(const std::string& what, const std::string& line,
               const std::vector<std::string>& more = {}) const {
    return run("param " + what + " ./T '-[A a:b:]' " + line, more);
  }
  std::string stored(const std::string& address) const {
    return param("get", address + " --json").out;
  }

  const std::string kFirst = arrayOf(number(1) + "," + number(2));
  const std::string kSecond = dictionaryOf(number(7), arrayOf(number(3)));
};

TEST_F(ParamCommandTest, GetsTheHooksParametersAndSingleOnes) {
  EXPECT_EQ(param("get", "").out,
            "ADDRESS      VALUE\n0.0          int:1\n0.1          int:2\n1.0.key      int:7\n"
            "1.0.value.0  int:3\n");
  EXPECT_EQ(stored(""), R"({"0":)" + kFirst + R"(,"1":)" + kSecond + "}\n");
  EXPECT_EQ(param("get", "1.0.value.0").out, "int:3\n");
  EXPECT_EQ(param("get", "0").out, "json:" + kFirst + "\n");
  EXPECT_EQ(stored("1.0.value"), arrayOf(number(3)) + "\n");
}

TEST_F(ParamCommandTest, EveryKindIsWrittenAsItIsShown) {
  struct Case {
    std::string value;
    std::string json;
    std::string shown = value;
  };
  const std::vector<Case> cases = {
      {"bool:true", R"("_ValueParameter<Bool>","value":true)"},
      {"int:-9223372036854775808", R"("_ValueParameter<Int64>","value":-9223372036854775808)"},
      {"uint:18446744073709551615", R"("_ValueParameter<UInt64>","value":18446744073709551615)"},
      {"double:-1e3", R"("_ValueParameter<Double>","value":-1000)", "double:-1000.0"},
      {"string:", R"("_ValueParameter<String>","value":"")"},
      {"string:a: -b\n", R"("_ValueParameter<String>","value":"a: -b\n")",
       R"(json:{"type":"_ValueParameter<String>","value":"a: -b\n"})"},
      {"url:x://y?z=%20", R"("URL","string":"x://y?z=%20")"},
      {"date:2026-01-31T12:00:00Z", R"("Date","date":791553600)"},
      {"date:2026-01-31T12:00:00.25+01:30", R"("Date","date":791548200.25)",
       "date:2026-01-31T10:30:00.25Z"},
      {"date:2000-02-29T23:59:59.1-0015", R"("Date","date":-26437500.9)",
       "date:2000-03-01T00:14:59.10000000149011612Z"},
      {"color:#ff000080", R"("Color","red":1,"green":0,"blue":0,"alpha":0.5019607843137255)"},
      {"color:#0033FF", R"("Color","red":0,"green":0.2,"blue":1,"alpha":1)", "color:#0033ff"},
      {R"(json:{"type":"Color","red":2,"green":0.21,"blue":0,"alpha":1})",
       R"("Color","red":2,"green":0.21,"blue":0,"alpha":1)"},
      {"class:K", R"("Class","name":"K")"},
      {"selector:a:b:", R"("Selector","name":"a:b:")"},
      {"protocol:P", R"("Protocol","name":"P")"},
      {"code:x + 1", R"("Code","code":"x + 1")"},
      {"nil", R"("Nil")"},
      {R"(json:{"items":[],"type":"Array"})", R"("Array","items":[])", "json:" + arrayOf("")},
  };
  for (const Case& kind : cases) {
    EXPECT_EQ(param("set", "-1", {kind.value}).status, 0) << kind.value;
    EXPECT_EQ(stored("-1"), R"({"type":)" + kind.json + "}\n");
    EXPECT_EQ(param("get", "-1").out, kind.shown + "\n");
  }
}

TEST_F(ParamCommandTest, MalformedArgumentsAreWrongUsage) {
  std::vector<Refusal> refusals = {
      {"insert ./T X 0 nil", 2, "ADDRESS: 0: expected the address of an item or a pair"},
      {"remove ./T X 0.0.key", 2, "ADDRESS: "},
      {"remove ./T X 0.end", 2,
       "ADDRESS: 0.end: expected an index or a key after \"0.\"; a key of"},
      {"move ./T X 0.end 0", 2, "ADDRESS: 0.end: expected an index or a key at its end"},
      {"move ./T X 0.0 x", 2, "TO: x: expected an index"},
      {"insert ./T X 1.end nil --key int:x", 2, "--key: int:x: expected a whole number"},
      {"set ./T X 0", 2, "VALUE is missing"}};
  const std::pair<std::string, std::vector<std::string>> addresses[] = {
      {"the number of an argument", {"x", ".0", "0x1", "+1", "9223372036854775808", "", "[\"0\"]"}},
      {"an index or a key after \"0.", {"0.", "0..1", "0.a.", "0.end.1", "0.a..b"}},
      {"the index of a pair before \"", {"0.key", "0.1.key.value", "0.a.value"}},
      {"a key in brackets, such as [\"a.b\"], after \"0",
       {"0[", "0[1]", "0[\"a\"", "0[\"a\"]b", "0.a[\"\\x\"]"}}};
  for (const auto& [expected, wrong] : addresses) {
    for (const std::string& address : wrong) {
      refusals.push_back({"set ./T X '" + address + "' nil", 2,
                          address.empty() ? "ADDRESS: it is empty"
                                          : "ADDRESS: " + address + ": expected " + expected});
    }
  }
  std::string deep = "0";
  for (int i = 0; i < 600; ++i) deep += ".0";
  refusals.push_back({"get ./T X " + deep, 2, "ADDRESS: 0.0"});
  const std::pair<std::string, std::vector<std::string>> values[] = {
      {"a value that begins with", {"nil:", "text", "int"}},
      {"true or false", {"bool:yes"}},
      {"a whole number", {"int:1.5", "int:9223372036854775808", "uint:-1"}},
      {"a finite number", {"double:", "double:inf", "double:1e999", "double:1 "}},
      {"a URL", {"url:"}},
      {"a date such as",
       {"date:2026-02-29T12:00:00Z", "date:2026-01-31T12:00:00", "date:2026-01-31T12:00:00.Z",
        "date:2026-01-31T24:00:00Z", "date:2026-01-31T12:00:00ZZ"}},
      {"a color such as", {"color:#ff00", "color:#ff00zz", "color:#-1-1-1"}},
      {"a class's name", {"class:"}},
      {"the path of a file", {"data:", "image:a/.."}},
      {"a parameter in the form of manifests", {"json:", R"(json:{"type":"X"})"}}};
  for (const auto& [expected, wrong] : values) {
    for (const std::string& value : wrong) {
      refusals.push_back(
          {"set ./T X -1 '" + value + "'", 2, "VALUE: " + value + ": expected " + expected});
    }
  }
  refusals.push_back({"set ./T X -1 string:\xFF", 2, "VALUE: string:\uFFFD: expected UTF-8"});
  expectRefused("param", refusals);
}

TEST_F(ParamCommandTest, ItemsAreInsertedRemovedAndMoved) {
  const std::string nil = R"({"type":"Nil"})";
  const std::string one = number(1);
  const std::string two = number(2);
  const struct {
    const char* what;
    const char* line;
    std::string json;  ///< of the argument
  } cases[] = {
      {"insert", "0.0 nil", arrayOf(nil + "," + one + "," + two)},
      {"insert", "0.2 nil", arrayOf(one + "," + two + "," + nil)},
      {"insert", "1.0.value.end nil", dictionaryOf(number(7), arrayOf(number(3) + "," + nil))},
      {"remove", "0.0", arrayOf(two)},
      {"remove", "1.0", R"({"type":"Dictionary","items":[]})"},
      {"move", "0.0 1", arrayOf(two + "," + one)},
      {"move", "0.1 0", arrayOf(two + "," + one)},
      {"set", "1.0.key nil", dictionaryOf(nil, arrayOf(number(3)))},
  };
  for (const auto& [what, line, json] : cases) {
    EXPECT_EQ(param(what, line).err, "");
    const bool isFirst = *line == '0';
    EXPECT_EQ(stored(""), R"({"0":)" + (isFirst ? json : kFirst) + R"(,"1":)" +
                              (isFirst ? kSecond : json) + "}\n");
    store();
  }
  EXPECT_EQ(param("insert", "1.0 nil --key int:1").status, 0);
  EXPECT_EQ(stored("1.0.key") + stored("1.0.value") + stored("1.1.key"),
            one + "\n" + nil + "\n" + number(7) + "\n");
  EXPECT_EQ(param("remove", "0").status, 0);
  EXPECT_EQ(param("get", "").out.find("\n0"), std::string::npos);
}

std::string pair(const std::string& key, const std::string& value) {
  return R"({"key":)" + key + R"(,"value":)" + value + "}";
}

std::string text(const std::string& value) {
  return R"({"type":"_ValueParameter<String>","value":")" + value + R"("})";
}

TEST_F(ParamCommandTest, PairsAreNamedByTheirKeys) {
  const std::string pairs =
      pair(text("tags"), arrayOf(number(1))) + "," + pair(text("a.b"), number(2)) + "," +
      pair(text("end"), number(3)) + "," + pair(text("x"), number(4)) + "," +
      pair(text("x"), number(5)) + "," + pair(number(6), number(7)) + "," +
      pair(text("\\n"), R"({"type":"Dictionary","items":[)" + pair(text("1"), number(8)) + "]}");
  writeTweak("./T", hookJSON("a:b:", "v32@0:8@16@24",
                             R"("0":{"type":"Dictionary","items":[)" + pairs + "]}"));
  EXPECT_EQ(param("get", "").out,
            "ADDRESS       VALUE\n0.tags.0      int:1\n0[\"a.b\"]      int:2\n"
            "0[\"end\"]      int:3\n0.3.key       string:x\n0.3.value     int:4\n"
            "0.4.key       string:x\n0.4.value     int:5\n0.5.key       int:6\n"
            "0.5.value     int:7\n0[\"\\n\"][\"1\"]  int:8\n");
  EXPECT_EQ(param("get", "", {R"(0["\u000a"]["1"])"}).out, "int:8\n");
  const std::string start = "./T: -[A a:b:]: ";
  const std::string line = "./T '-[A a:b:]' ";
  const std::string before = manifest();
  expectRefused(
      "param",
      {{"get " + line + "0.tag", 1,
        start + "0.tag: \"0\" has no key \"tag\"; did you mean \"tags\"?"},
       {"get " + line + "0.color", 1,
        start + "0.color: \"0\" has no key \"color\"; known are \"tags\", \"a.b\", \"end\", "},
       {"set " + line + "0.x nil", 1,
        start + "0.x: \"0\" has several pairs with the key \"x\"; name one by its index: 3, 4\n"},
       {"set " + line + "0.tags.y nil", 1,
        start + "0.tags.y: \"0.tags\" is an array, which has no"},
       {"get " + line + "0.tags.0.key", 1, start + "0.tags.0.key: \"0.tags\" is an array, which"},
       {"get " + line + "0.5", 1, start + "0.5: \"0\" is a dictionary; after the index of a pair"},
       {"get " + line + "0.tags.0.z.1", 1,
        start + "0.tags.0.z.1: \"0.tags.0\" is neither an array"}});
  EXPECT_EQ(manifest(), before);
  EXPECT_EQ(param("insert", "0.tags.end nil --json").out,
            "{\"address\":\"0.tags.1\",\"value\":{\"type\":\"Nil\"}}\n");
  EXPECT_EQ(param("insert", R"(0["a.b"] nil --key string:c --json)").out,
            R"({"address":"0.1","key":)" + text("c") + R"(,"value":{"type":"Nil"}})" + "\n");
  EXPECT_EQ(param("move", "0.tags end --json").out, "{\"address\":\"0.7\"}\n");
  EXPECT_EQ(param("remove", R"(0["a.b"] --json)").out, "{\"address\":\"0.1\"}\n");
  EXPECT_THAT(param("get", "").out, HasSubstr("\n0.c           nil\n0[\"end\"]"));
}

TEST_F(ParamCommandTest, WhatIsPrintedReadsBackUnchanged) {
  RandomManifest random(2);
  std::string args;
  for (int count = 0; count < 25;) {
    for (const auto& hook : random.next()._hooks) {
      for (const auto& [index, box] : hook->_args) {
        try {
          const std::string json = encodeJSON(box);
          args += (args.empty() ? "\"" : ",\"") + std::to_string(count++) + "\":" + json;
        } catch (const EncodingError&) {  // no document can hold it
        }
      }
    }
  }
  writeTweak("./T", hookJSON("a:b:", "v32@0:8@16@24", args));
  const std::string before = manifest();
  std::istringstream rows(param("get", "").out);
  std::string row;
  std::getline(rows, row);
  int count = 0;
  for (; std::getline(rows, row); ++count) {
    const std::size_t end = row.find("  ");
    const std::string address = row.substr(0, end);
    const std::string value = row.substr(row.find_first_not_of(' ', end));
    const std::size_t colon = value.find(':');
    if (value.starts_with("data:") || value.starts_with("image:"))
      write("T/Resources/" + value.substr(colon + 1), "");
    EXPECT_EQ(param("get", "", {address}).out, value + "\n");
    EXPECT_EQ(param("set", "", {address, value}).status, 0) << row;
    ASSERT_EQ(manifest(), before) << row;
  }
  EXPECT_GT(count, 25);
}

TEST_F(ParamCommandTest, WarnsOfValuesThatDisagreeWithTheTypes) {
  writeTweak("./T", hookJSON("a:b:", "v32@0:8B16@24", R"("0":)" + text("")));
  EXPECT_EQ(param("set", "1 nil").err, "") << "of the new value only";
  EXPECT_EQ(param("set", "-1 nil").err,
            "./T: -[A a:b:]: args.-1: warning: the method returns nothing\n");
}

TEST_F(ParamCommandTest, SaysWhatIsWrongWhereAndChangesNothing) {
  const std::string before = manifest();
  const std::string start = "./T: -[A a:b:]: ";
  expectRefused(
      "param",
      {{"get ./T '-[A a:b:]' -1", 1, start + "-1: the hook has no parameter \"-1\"\n"},
       {"insert ./T '-[A a:b:]' 0.3 nil", 1, start + "0.3: \"0\" has no index 3; it has 2 items\n"},
       {"insert ./T '-[A a:b:]' 0.-1 nil", 1,
        start + "0.-1: \"0\" has no index -1; it has 2 items\n"},
       {"insert ./T '-[A a:b:]' 1.end nil", 1,
        start + "1.end: --key is required when adding to a dictionary\n"},
       {"insert ./T '-[A a:b:]' 0.end nil --key nil", 1,
        start + "0.end: --key is for dictionaries only\n"},
       {"remove ./T '-[A a:b:]' 0.2", 1, start + "0.2: \"0\" has no index 2; it has 2 items\n"},
       {"remove ./T '-[A a:b:]' 7", 1, start + "7: the hook has no parameter \"7\"\n"},
       {"move ./T '-[A a:b:]' 0.0 2", 1, start + "0.0: no place 2 in the list; the last is 1\n"}});
  EXPECT_EQ(manifest(), before);
}

TEST_F(ParamCommandTest, FilesBecomeResources) {
  write("in/a.bin", "one");
  EXPECT_EQ(param("set", "0.0 data:in/a.bin").err, "");
  EXPECT_EQ(contents("./T/Resources/a.bin"), "one");
  EXPECT_EQ(stored("0.0"), "{\"type\":\"Data\",\"filename\":\"a.bin\"}\n");
  EXPECT_EQ(param("set", "-1 image:in/a.bin").err,
            "tavlen: warning: in/a.bin: is not a PNG or JPEG image\n")
      << "the same bytes are there";
  EXPECT_EQ(param("set", "1 data:a.bin").err, "") << "the name of a resource";
  EXPECT_EQ(stored("1"), "{\"type\":\"Data\",\"filename\":\"a.bin\"}\n");
  store();
  write("a.bin", "a file here");
  EXPECT_EQ(param("set", "1 data:a.bin").status, 1);
  write("in/2/a.bin", "another");
  EXPECT_EQ(param("insert", "1.end data:in/a.bin --key data:in/2/a.bin").status, 1);
  EXPECT_EQ(param("set", R"(0.0 data:in/a\b)").status, 2) << "no archive could hold it";

  // Nothing is left of what fails, and no other file is overwritten unasked.
  write("in/a.bin", "two");
  write("in/b.bin", "b");
  const std::string before = manifest();
  EXPECT_EQ(param("set", "-1 data:in/a.bin").err,
            "tavlen: error: ./T: -[A a:b:]: -1: Resources/a.bin already exists and differs; "
            "use --replace to overwrite it\n");
  EXPECT_EQ(param("set", "0.9 data:in/b.bin").status, 1);
  EXPECT_EQ(param("insert", "0.9 data:in/b.bin").status, 1);
  EXPECT_THAT(param("set", "0.0 data:in/none").err, HasSubstr("in/none"));
  EXPECT_EQ(param("set", "0.0 data:in").status, 1) << "a folder";
  EXPECT_EQ(manifest(), before);
  EXPECT_EQ(contents("./T/Resources/a.bin"), "one");
  EXPECT_FALSE(fs::exists(folder() / "./T/Resources/b.bin"));
  EXPECT_EQ(param("set", "-1 data:in/a.bin --replace").err, "");
  EXPECT_EQ(contents("./T/Resources/a.bin"), "two");

  // A link in the resources is not followed to the outside.
  write("outside", "kept");
  fs::create_symlink("../../outside", folder() / "./T/Resources/b.bin");
  EXPECT_EQ(param("set", "-1 data:in/b.bin --replace").status, 1);
  EXPECT_EQ(contents("outside"), "kept");
}

}  // namespace
}  // namespace tavlen
