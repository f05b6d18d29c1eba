#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

using testing::HasSubstr;

class HookCommandTest : public CommandTest {
 protected:
  HookCommandTest() { writeTweak("./T", kFirst + ",null," + kSecond); }
  std::string manifest() const { return contents("./T/Manifest.json"); }
  std::string list() const { return run("hook list ./T --json").out; }

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
  EXPECT_EQ(list(), "[" + kFirst + "," + kSecond + "]\n");
}

TEST_F(HookCommandTest, AddsAtTheEndAndKeepsNulls) {
  const Result result = run("hook add ./T A c: --signature v24@0:8@16 --class-method --name See");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err + result.out, "");
  EXPECT_THAT(manifest(), HasSubstr("}}},null,{"));
  EXPECT_THAT(manifest(),
              HasSubstr(R"(,{"customName":"See","className":"A","selector":"c:",)"
                        R"("signature":"v24@0:8@16","isClassMethod":true,"args":{}}]})"));
  const Result odd = run("hook add ./T A c: --signature v16@0:8");
  EXPECT_EQ(odd.status, 0) << "an instance method of that name is another hook";
  EXPECT_EQ(
      odd.err,
      "tavlen: warning: the signature \"v16@0:8\" has 0 arguments, the selector \"c:\" takes 1\n");
}

TEST_F(HookCommandTest, AHookIsNamedByItsMethodOrItsName) {
  run("hook add ./T A b --signature v16@0:8 --class-method --name Bee");
  const std::string before = manifest();
  for (const char* name : {"'+[A b]'", "Bee", "-- '+[A b]'"}) {
    EXPECT_EQ(run(std::string("hook remove ./T ") + name).err, "") << name;
    EXPECT_EQ(list(), "[" + kFirst + "," + kSecond + "]\n");
    write("./T/Manifest.json", before);
  }
  EXPECT_EQ(run("hook remove ./T '-[A b]'").status, 0);
  EXPECT_THAT(list(), HasSubstr("\"Bee\""));
  EXPECT_EQ(run("hook remove ./T -- '-[A a:]'").status, 0);
}

TEST_F(HookCommandTest, ChangesWhatIsAskedForOnly) {
  const std::pair<const char*, std::string> cases[] = {
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
      {{"add ./T A b --signature v16@0:8", 1, "./T: -[A b]: the tweak already hooks -[A b]\n"},
       {"add ./T A c\xFF --signature v", 1, "./T: -[A c"},
       {"add ./T A c", 2, "--signature is missing"},
       {"add ./T '' c --signature v", 2, "CLASS: it is empty"},
       {"set ./T '-[A a:]'", 2, "--class, --selector, --signature, "},
       {"set ./T '-[A a:]' --name n --no-name", 2, ""},
       {"set ./T '-[A a:]' --selector b", 1, "./T: -[A a:]: the tweak already hooks -[A b]\n"},
       {"set ./T '-[A a:]' --class B --selector x", 1,
        "./T: -[A a:]: the tweak already hooks -[B x], as \"X\"\n"},
       {"set ./T '-[A z]' --name n", 1, "./T: -[A z]: Hook not found\n"},
       {"remove ./T X", 1, "./T: X: several hooks have that name; use"},
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
  EXPECT_EQ(run("override set ./T version 2").err, "");
  EXPECT_EQ(list(), R"([{"type":"Version","value":"2"},)" + build + "]\n");
  store(twice);
  EXPECT_EQ(run("override remove ./T Version").err, "");
  EXPECT_EQ(list(), "[" + build + "]\n");
  EXPECT_EQ(run("override set ./T MinimumOSVersion none").status, 1);
  EXPECT_EQ(run("override add ./T MinimumOSVersion none").status, 0);
  EXPECT_EQ(list(), "[" + build + R"(,{"type":"MinimumOSVersion"}])" + "\n");
}

TEST_F(OverrideCommandTest, RefusesAndChangesNothing) {
  const std::string before = contents("./T/Manifest.json");
  expectRefused("override",
                {{"set ./T Build 1", 1, "./T: Build: the tweak has no such override\n"},
                 {"remove ./T Build", 1, "./T: Build: the tweak has no such override\n"},
                 {"set ./T Build", 2, "VALUE is missing"},
                 {"add ./T Colour 1", 2, "KIND: unknown value \"Colour\"; known are DisplayName,"},
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
  expectRefused("override", {{"add ./T Build --root tree", 1, "./T: Build: IPA not found"}});
  EXPECT_EQ(list(), "[{\"type\":\"DisplayName\",\"value\":\"Alpha\"}]\n");
}

}  // namespace
}  // namespace tavlen
