#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

using testing::HasSubstr;

class HookCommandTest : public CommandTest {
 protected:
  HookCommandTest() { writeTweak("./T", kFirst + ",null," + kSecond); }
  std::string manifest() const { return contents("T/Manifest.json"); }
  std::string hooks() const {
    const std::string document = manifest();
    return document.substr(document.find("\"hooks\":") + 8);
  }

  const std::string kFirst = hookJSON("a:", "v24@0:8@16", R"("0":{"type":"Nil"})");
  const std::string kSecond = hookJSON("b", "v16@0:8");
};

TEST_F(HookCommandTest, ListsHooksAsTheyAreNamed) {
  writeTweak("Long", hookJSON(std::string(100, 'x') + ":", "v24@0:8@16"));
  writeTweak("None", "null");
  EXPECT_EQ(
      run("hook list ./T").out,
      "SIGNATURE   REPLACES  HOOK\nv24@0:8@16  0         -[A a:]\nv16@0:8               -[A b]\n");
  EXPECT_THAT(run("hook list ./Long").out, HasSubstr("-[A " + std::string(100, 'x') + ":]\n"));
  EXPECT_EQ(run("hook list ./None").out, "");
  EXPECT_EQ(run("hook list ./T --json").out,
            R"([{"method":"-[A a:]","class":"A","selector":"a:","signature":"v24@0:8@16",)"
            R"("args":{"0":{"type":"Nil"}}},)"
            R"({"method":"-[A b]","class":"A","selector":"b","signature":"v16@0:8","args":{}}])"
            "\n");
}

TEST_F(HookCommandTest, AddsAtTheEndAndKeepsNulls) {
  const Result result = run("hook add ./T '+[A c:]' --signature v24@0:8@16 --name See");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err + result.out, "");
  EXPECT_THAT(manifest(), HasSubstr("}}},null,{"));
  EXPECT_THAT(manifest(),
              HasSubstr(R"(,{"customName":"See","className":"A","selector":"c:",)"
                        R"("signature":"v24@0:8@16","isClassMethod":true,"args":{}}]})"));
  const Result odd = run("hook add ./T '-[A c:]' --signature v16@0:8");
  EXPECT_EQ(odd.status, 0) << "an instance method of that name is another hook";
  EXPECT_EQ(odd.err,
            "./T: -[A c:]: signature: warning: \"v16@0:8\" has 0 arguments, the selector \"c:\" "
            "takes 1\n");
}

TEST_F(HookCommandTest, AddsAWholeHookOrNothing) {
  write("in/a.bin", "one");
  const std::string start = "hook add ./T '-[A c:d:]' --signature c32@0:8c16@24 ";
  const std::string before = manifest();
  const Result dry = run(start + "--arg 1=data:in/a.bin --dry-run");
  EXPECT_EQ(dry.out + dry.err,
            "added hook -[A c:d:]\n    types: \"c32@0:8c16@24\"\n"
            "    args.1: { \"$data\" = \"a.bin\" }\n");
  expectRefused(start,
                {{"--arg 1=data:in/a.bin --arg 0=data:in/none", 1, "./T: -[A c:d:]: in/none"},
                 {"--arg int:1", 2, "--arg: int:1: expected INDEX=VALUE"},
                 {"--return nil --arg -1=nil", 2, "--arg: -1: has several values"},
                 {"--arg 0=bol:true", 2, "--arg: bol:true: expected a value that begins"}});
  EXPECT_EQ(manifest(), before);
  EXPECT_FALSE(fs::exists(folder() / "T/Resources/a.bin"));
  const Result added =
      run(start + "--return uint:300 --arg 1=data:in/a.bin --arg '0=string:[a, b]' --json");
  const std::string args = R"("args":{"-1":{"type":"_ValueParameter<UInt64>","value":300},)"
                           R"("0":{"type":"_ValueParameter<String>","value":"[a, b]"},)"
                           R"("1":{"type":"Data","filename":"a.bin"}}})";
  EXPECT_EQ(added.out, R"({"method":"-[A c:d:]","class":"A","selector":"c:d:",)"
                       R"("signature":"c32@0:8c16@24",)" +
                           args + "\n");
  EXPECT_EQ(added.err,
            R"({"file":"./T","place":"-[A c:d:]: args.-1","severity":"warning",)"
            R"("code":"out-of-range","message":"300 is out of range; the type holds -128 to 127"})"
            "\n"
            R"({"file":"./T","place":"-[A c:d:]: args.0","severity":"warning",)"
            R"("code":"wrong-kind","message":"a text for an integer"})"
            "\n");
  EXPECT_THAT(manifest(), HasSubstr(args));
  EXPECT_EQ(contents("T/Resources/a.bin"), "one");
}

TEST_F(HookCommandTest, MovesHooksAmongThoseThatAreNotNull) {
  const std::string third = hookJSON("c", "v16@0:8");
  const struct {
    const char* line;
    std::string hooks;
  } rows[] = {{"'-[A c]' 0", third + "," + kFirst + ",null," + kSecond},
              {"'-[A a:]' 1", "null," + kSecond + "," + kFirst + "," + third},
              {"'-[A a:]' end", "null," + kSecond + "," + third + "," + kFirst}};
  for (const auto& [line, hooks] : rows) {
    writeTweak("./T", kFirst + ",null," + kSecond + "," + third);
    EXPECT_EQ(run(std::string("hook move ./T ") + line).err, "");
    EXPECT_EQ(this->hooks(), "[" + hooks + "]}") << line;
  }
}

TEST_F(HookCommandTest, AHookIsNamedByItsMethodOrItsName) {
  run("hook add ./T '+[A b]' --signature v16@0:8 --name Bee");
  const std::string before = manifest();
  for (const char* name : {"'+[A b]'", "Bee", "-- '+[A b]'"}) {
    EXPECT_EQ(run(std::string("hook remove ./T ") + name).err, "") << name;
    EXPECT_EQ(hooks(), "[" + kFirst + ",null," + kSecond + "]}");
    write("T/Manifest.json", before);
  }
  EXPECT_EQ(run("hook remove ./T '-[A b]'").status, 0);
  EXPECT_THAT(hooks(), HasSubstr("\"Bee\""));
  EXPECT_EQ(run("hook remove ./T -- '-[A a:]'").status, 0);
}

TEST_F(HookCommandTest, ChangesWhatIsAskedForOnly) {
  const std::pair<const char*, std::string> cases[] = {
      {"--method '-[A c:]'",
       R"("className":"A","selector":"c:","signature":"v24@0:8@16","isClassMethod":false,)"},
      {"--selector c:", R"("className":"A","selector":"c:","signature":"v24@0:8@16",)"},
      {"--class B --signature v", R"("className":"B","selector":"a:","signature":"v",)"},
      {"--name N", R"("customName":"N","className":"A","selector":"a:","signature":"v24@0:8@16",)"},
      {"--class-method",
       R"("className":"A","selector":"a:","signature":"v24@0:8@16","isClassMethod":true,)"}};
  const std::string before = manifest();
  for (const auto& [options, hook] : cases) {
    EXPECT_EQ(run(std::string("hook set ./T '-[A a:]' ") + options).status, 0) << hook;
    EXPECT_THAT(manifest(), HasSubstr(":[{" + hook));
    EXPECT_THAT(manifest(), HasSubstr(R"("args":{"0":{"type":"Nil"}}},null,)"));
    write("./T/Manifest.json", before);
  }
  run("hook set ./T '-[A a:]' --name N");
  EXPECT_EQ(run("hook set ./T N --no-name").status, 0);
  EXPECT_EQ(manifest(), before);
}

TEST_F(HookCommandTest, RefusesAndChangesNothing) {
  const std::string named =
      R"({"customName":"X","className":"B","selector":"x","signature":"v","isClassMethod":false,"args":{}})";
  writeTweak("./T", kFirst + "," + kSecond + "," + named + "," + named);
  const std::string before = manifest();
  expectRefused(
      "hook",
      {{"add ./T '-[A b]' --signature v16@0:8", 1, "./T: -[A b]: the tweak already hooks -[A b]\n"},
       {"add ./T '-[A c\xFF]' --signature v", 2, "METHOD: it is not UTF-8"},
       {"set ./T '-[A a:]'", 2, "--method, --class, --selector, "},
       {"set ./T '-[A a:]' --name n --no-name", 2, ""},
       {"set ./T '-[A a:]' --selector b", 1, "./T: -[A a:]: the tweak already hooks -[A b]\n"},
       {"set ./T '-[A a:]' --class B --selector x", 1,
        "./T: -[A a:]: the tweak already hooks -[B x], as \"X\"\n"},
       {"set ./T '-[A z]' --name n", 1, "./T: -[A z]: the tweak has no such hook; did"},
       {"set ./T '-[A a:]' --method '-[A c]' --class B", 2, "--method and --class cannot be"},
       {"remove ./T Y", 1, "./T: Y: the tweak has no such hook; known are -[A a:], -[A b], -["},
       {"remove ./T X", 1, "./T: X: several hooks have that name; name one by its method: -["},
       {"move ./T '-[A a:]' 4", 1, "./T: -[A a:]: no place 4 in the list; the last is 3\n"},
       {"move ./T '-[A a:]' x", 2, "TO: x: expected an index, or end\n"},
       {"remove ./T", 2, "HOOK is missing"}});
  EXPECT_EQ(manifest(), before);
}

using testing::EndsWith;

class OverrideCommandTest : public CommandTest {
 protected:
  OverrideCommandTest() { store(""); }
  void store(const std::string& overrides) const {
    write("./T/Manifest.json",
          R"({"configuration":{"name":"N","color":"darkRed","bundleID":"com.a"},"overrides":[)" +
              overrides + R"(],"hooks":[null]})");
  }
  std::string list() const { return run("override list ./T --json").out; }
};

TEST_F(OverrideCommandTest, EveryKindIsWrittenAsItIsShown) {
  struct Case {
    const char* kind;
    std::string value;
    std::string json;
    std::string shown = value;
  };
  const std::vector<Case> cases = {
      {"DisplayName", "A B", R"("A B")"},
      {"BundleName", "x", R"("x")"},
      {"BundleID", "com.x", R"("com.x")"},
      {"Version", "1.0", R"("1.0")"},
      {"Build", "7", R"("7")"},
      {"MinimumOSVersion", "14.0", R"("14.0")"},
      {"IPadSupport", "true", "true"},
      {"Orientations", "Portrait,UIInterfaceOrientationLandscapeLeft",
       R"(["UIInterfaceOrientationPortrait","UIInterfaceOrientationLandscapeLeft"])",
       "Portrait,LandscapeLeft"},
      {"OrientationsIPad", "none", "[]"}};
  std::string json;
  for (const Case& kind : cases) {
    EXPECT_EQ(run("override add ./T", {kind.kind, kind.value}).err, "") << kind.kind;
    json += std::string(json.empty() ? "" : ",") + R"({"type":")" + kind.kind + R"(","value":)" +
            kind.json + "}";
    EXPECT_THAT(run("override list ./T").out, EndsWith("  " + kind.shown + "\n"));
  }
  EXPECT_EQ(list(), "[" + json + "]\n");
  EXPECT_THAT(contents("./T/Manifest.json"), EndsWith(R"(],"hooks":[null]})"));
}

TEST_F(OverrideCommandTest, AKindIsThereOnceOnly) {
  const std::string build = R"({"type":"Build","value":"1"})";
  const std::string twice =
      R"({"type":"Version","value":"a"},)" + build + R"(,{"type":"Version","value":"b"})";
  store(twice);
  EXPECT_EQ(run("override add ./T version 2").err,
            "tavlen: error: ./T: Version: the tweak already has such an override; use set to "
            "change it\n");
  EXPECT_EQ(run("override set ./T VERSION 2 --json").out, R"({"type":"Version","value":"2"})"
                                                          "\n");
  EXPECT_EQ(list(), R"([{"type":"Version","value":"2"},)" + build + "]\n");
  store(twice);
  EXPECT_EQ(run("override remove ./T Version").err, "");
  EXPECT_EQ(list(), "[" + build + "]\n");
  EXPECT_EQ(run("override set ./T MinimumOSVersion none").status, 1);
  EXPECT_EQ(run("override add ./T MinimumOSVersion none").status, 0);
  EXPECT_EQ(run("override move ./T 'min os VERSION' 0").err, "") << "named by its title";
  EXPECT_EQ(list(), R"([{"type":"MinimumOSVersion"},)" + build + "]\n");
}

TEST_F(OverrideCommandTest, RefusesAndChangesNothing) {
  const std::string before = contents("T/Manifest.json");
  expectRefused("override",
                {{"set ./T Build 1", 1, "./T: Build: the tweak has no such override\n"},
                 {"remove ./T Build", 1, "./T: Build: the tweak has no such override\n"},
                 {"set ./T Build", 2, "VALUE is missing"},
                 {"add ./T Bild 1", 2,
                  "KIND: no kind of override is called \"Bild\"; did you mean \"Build\"?"},
                 {"move ./T Build end", 1, "./T: Build: the tweak has no such override\n"},
                 {"add ./T IPadSupport yes", 2, "VALUE: yes: expected true or false"},
                 {"add ./T MinimumOSVersion 1.x", 2, "VALUE: 1.x: expected a version such as"},
                 {"add ./T Orientations Portrait,Up", 2, "VALUE: Portrait,Up: expected none, or a"},
                 {"add ./T Orientations ''", 2, "VALUE: "},
                 {"add ./T Build \xFF", 2, "VALUE: \uFFFD: expected UTF-8"}});
  EXPECT_EQ(contents("T/Manifest.json"), before);
}

TEST_F(OverrideCommandTest, WithoutAValueItIsTheApps) {
  write("tree/Applications/A.app/Info.plist",
        appPlist("com.a", "Main",
                 "<key>CFBundleDisplayName</key><string>Alpha</string><key>CFBundleVersion</key>"
                 "<string>7</string>"));
  EXPECT_EQ(run("override add ./T DisplayName --root tree").err, "");
  EXPECT_EQ(list(), "[{\"type\":\"DisplayName\",\"value\":\"Alpha\"}]\n");
  fs::remove_all(folder() / "tree/Applications/A.app");
  expectRefused("override", {{"add ./T Build --root tree", 1, "./T: Build: com.a: no app"}});
  EXPECT_EQ(list(), "[{\"type\":\"DisplayName\",\"value\":\"Alpha\"}]\n");
}

}  // namespace
}  // namespace tavlen
