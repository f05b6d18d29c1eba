#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"
#include "tests/support/AppPlist.h"

namespace tavlen {
namespace {

using testing::EndsWith;

class OverrideCommandTest : public CommandTest {
 protected:
  OverrideCommandTest() { store(""); }
  void store(const std::string& overrides) const {
    write("T/Manifest.json",
          R"({"configuration":{"name":"N","color":"darkRed","bundleID":"com.a"},"overrides":[)" +
              overrides + R"(],"hooks":[null]})");
  }
  std::string list() const { return run("override list T --json").out; }
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
    EXPECT_EQ(run("override add T", {kind.kind, kind.value}).err, "") << kind.kind;
    json += std::string(json.empty() ? "" : ",") + R"({"type":")" + kind.kind + R"(","value":)" +
            kind.json + "}";
    EXPECT_THAT(run("override list T").out, EndsWith("  " + kind.shown + "\n"));
  }
  EXPECT_EQ(list(), "[" + json + "]\n");
  EXPECT_THAT(contents("T/Manifest.json"), EndsWith(R"(],"hooks":[null]})"));
}

TEST_F(OverrideCommandTest, AKindIsThereOnceOnly) {
  const std::string build = R"({"type":"Build","value":"1"})";
  const std::string twice =
      R"({"type":"Version","value":"a"},)" + build + R"(,{"type":"Version","value":"b"})";
  store(twice);
  EXPECT_EQ(
      run("override add T version 2").err,
      "tavlen: error: T: Version: the tweak already has such an override; use set to change it\n");
  EXPECT_EQ(run("override set T version 2").err, "");
  EXPECT_EQ(list(), R"([{"type":"Version","value":"2"},)" + build + "]\n");
  store(twice);
  EXPECT_EQ(run("override remove T Version").err, "");
  EXPECT_EQ(list(), "[" + build + "]\n");
  EXPECT_EQ(run("override set T MinimumOSVersion none").status, 1);
  EXPECT_EQ(run("override add T MinimumOSVersion none").status, 0);
  EXPECT_EQ(list(), "[" + build + R"(,{"type":"MinimumOSVersion"}])" + "\n");
}

TEST_F(OverrideCommandTest, RefusesAndChangesNothing) {
  const std::string before = contents("T/Manifest.json");
  expectRefused("override",
                {{"set T Build 1", 1, "T: Build: the tweak has no such override\n"},
                 {"remove T Build", 1, "T: Build: the tweak has no such override\n"},
                 {"add nowhere Build 1", 1, "nowhere: "},
                 {"set T Build", 2, "VALUE is required"},
                 {"add T Colour 1", 2, "KIND: Colour not in {DisplayName,"},
                 {"add T IPadSupport yes", 2, "VALUE: yes: expected true or false"},
                 {"add T MinimumOSVersion 1.x", 2, "VALUE: 1.x: expected a version such as"},
                 {"add T Orientations Portrait,Up", 2, "VALUE: Portrait,Up: expected none, or a"},
                 {"add T Orientations ''", 2, "VALUE: "},
                 {"add T Build \xFF", 2, "VALUE: \uFFFD: expected UTF-8"}});
  EXPECT_EQ(contents("T/Manifest.json"), before);
}

TEST_F(OverrideCommandTest, WithoutAValueItIsTheApps) {
  write("tree/Applications/A.app/Info.plist",
        appPlist("com.a", "Main",
                 "<key>CFBundleDisplayName</key><string>Alpha</string><key>CFBundleVersion</key>"
                 "<string>7</string>"));
  EXPECT_EQ(run("override add T DisplayName --root tree").err, "");
  EXPECT_EQ(list(), "[{\"type\":\"DisplayName\",\"value\":\"Alpha\"}]\n");
  std::filesystem::remove_all(folder() / "tree/Applications/A.app");
  expectRefused("override", {{"add T Build --root tree", 1, "T: Build: IPA not found"}});
  EXPECT_EQ(list(), "[{\"type\":\"DisplayName\",\"value\":\"Alpha\"}]\n");
}

}  // namespace
}  // namespace tavlen
