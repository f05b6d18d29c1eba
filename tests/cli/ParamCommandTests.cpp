#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"

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
    writeTweak("./T", hookJSON("a:b:", "v32@0:8@16@24", R"("0":)" + kFirst + R"(,"1":)" + kSecond));
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
      {"string:a: -b\n", R"("_ValueParameter<String>","value":"a: -b\n")", "string:a: -b\\n"},
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
    EXPECT_EQ(param("set", "-1", {kind.value}).err, "") << kind.value;
    EXPECT_EQ(stored("-1"), R"({"type":)" + kind.json + "}\n");
    EXPECT_EQ(param("get", "-1").out, kind.shown + "\n");
  }
}

TEST_F(ParamCommandTest, MalformedArgumentsAreWrongUsage) {
  std::vector<Refusal> refusals = {
      {"insert ./T X 0 nil", 2, "ADDRESS: 0: expected the address of an item or a pair"},
      {"remove ./T X 0.0.key", 2, "ADDRESS: "},
      {"remove ./T X 0.end", 2, "ADDRESS: "},
      {"move ./T X 0.0 x", 2, "TO: x: expected an index"},
      {"insert ./T X 1.end nil --key int:x", 2, "--key: int:x: expected a whole number"},
      {"set ./T X 0", 2, "VALUE is missing"}};
  for (const std::string address : {"x", "0.", ".0", "0..1", "0.key", "0.1.key.value", "0.1.keys",
                                    "0x1", "+1", "9223372036854775808", "0.0 ", "-1.-"}) {
    refusals.push_back({"set ./T X '" + address + "' nil", 2,
                        "ADDRESS: " + address + ": expected an address such"});
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

TEST_F(ParamCommandTest, SaysWhatIsWrongWhereAndChangesNothing) {
  const std::string before = manifest();
  const std::string start = "./T: -[A a:b:]: ";
  expectRefused(
      "param",
      {{"get ./T '-[A a:b:]' -1", 1, start + "-1: Parameter not found at index -1 in tweak /"},
       {"insert ./T '-[A a:b:]' 0.3 nil", 1, start + "0.3: Index out of bounds: 3\n"},
       {"insert ./T '-[A a:b:]' 0.-1 nil", 1, start + "0.-1: Index out of bounds: -1\n"},
       {"insert ./T '-[A a:b:]' 1.end nil", 1,
        start + "1.end: --key is required when adding to a dictionary\n"},
       {"insert ./T '-[A a:b:]' 0.end nil --key nil", 1,
        start + "0.end: --key is for dictionaries only\n"},
       {"remove ./T '-[A a:b:]' 0.2", 1, start + "0.2: Index out of bounds: 2\n"},
       {"remove ./T '-[A a:b:]' 7", 1, start + "7: Parameter not found at index 7 in tweak /"},
       {"move ./T '-[A a:b:]' 0.0 2", 1, start + "0.0: Index out of bounds: 2\n"}});
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
