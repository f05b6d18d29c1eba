#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

using testing::HasSubstr;

class HookCommandTest : public CommandTest {
 protected:
  HookCommandTest() { writeTweak("T", kFirst + ",null," + kSecond); }
  std::string manifest() const { return contents("T/Manifest.json"); }
  std::string list() const { return run("hook list T --json").out; }

  const std::string kFirst = hookJSON("a:", "v24@0:8@16", R"("0":{"type":"Nil"})");
  const std::string kSecond = hookJSON("b", "v16@0:8");
};

TEST_F(HookCommandTest, ListsHooksAsTheyAreNamed) {
  writeTweak("Long", hookJSON(std::string(100, 'x') + ":", "v24@0:8@16"));
  writeTweak("None", "null");
  EXPECT_EQ(
      run("hook list T").out,
      "SIGNATURE   REPLACES  HOOK\nv24@0:8@16  0         -[A a:]\nv16@0:8               -[A b]\n");
  EXPECT_THAT(run("hook list Long").out, HasSubstr("-[A " + std::string(100, 'x') + ":]\n"));
  EXPECT_EQ(run("hook list None").out, "");
  EXPECT_EQ(list(), "[" + kFirst + "," + kSecond + "]\n");
}

TEST_F(HookCommandTest, AddsAtTheEndAndKeepsNulls) {
  const Result result = run("hook add T A c: --signature v24@0:8@16 --class-method --name See");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err + result.out, "");
  EXPECT_THAT(manifest(), HasSubstr("}}},null,{"));
  EXPECT_THAT(manifest(),
              HasSubstr(R"(,{"customName":"See","className":"A","selector":"c:",)"
                        R"("signature":"v24@0:8@16","isClassMethod":true,"args":{}}]})"));
  const Result odd = run("hook add T A c: --signature v16@0:8");
  EXPECT_EQ(odd.status, 0) << "an instance method of that name is another hook";
  EXPECT_EQ(odd.err,
            "tavlen: warning: the signature \"v16@0:8\" does not fit the selector \"c:\"\n");
}

TEST_F(HookCommandTest, AHookIsNamedByItsMethodOrItsName) {
  run("hook add T A b --signature v16@0:8 --class-method --name Bee");
  const std::string before = manifest();
  for (const char* name : {"'+[A b]'", "Bee", "--hook '+[A b]'", "-- '+[A b]'"}) {
    EXPECT_EQ(run(std::string("hook remove T ") + name).err, "") << name;
    EXPECT_EQ(list(), "[" + kFirst + "," + kSecond + "]\n");
    write("T/Manifest.json", before);
  }
  EXPECT_EQ(run("hook remove T '-[A b]'").status, 0);
  EXPECT_THAT(list(), HasSubstr("\"Bee\""));
  EXPECT_EQ(run("hook remove T -- '-[A a:]'").status, 0);
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
    EXPECT_EQ(run(std::string("hook set T '-[A a:]' ") + options).status, 0) << hook;
    EXPECT_THAT(manifest(), HasSubstr(":[{" + hook));
    EXPECT_THAT(manifest(), HasSubstr(R"("args":{"0":{"type":"Nil"}}},null,)"));
    write("T/Manifest.json", before);
  }
  run("hook set T '-[A a:]' --name N");
  EXPECT_EQ(run("hook set T N --no-name").status, 0);
  EXPECT_EQ(manifest(), before);
}

TEST_F(HookCommandTest, RefusesAndChangesNothing) {
  const std::string named =
      R"({"customName":"X","className":"B","selector":"x","signature":"v","isClassMethod":false,"args":{}})";
  writeTweak("T", kFirst + "," + kSecond + "," + named + "," + named);
  write("Broken/Manifest.json", R"({"configuration":1})");
  const std::string before = manifest();
  expectRefused(
      "hook",
      {{"add T A b --signature v16@0:8", 1, "T: -[A b]: the tweak already hooks that method\n"},
       {"add T A c\xFF --signature v", 1, "T: -[A c"},
       {"add T A c", 2, "--signature is required"},
       {"add T '' c --signature v", 2, "CLASS: it is empty"},
       {"set T '-[A a:]'", 2, "At least 1 option"},
       {"set T '-[A a:]' --name n --no-name", 2, ""},
       {"set T '-[A a:]' --selector b", 1, "T: -[A a:]: the tweak already hooks that method\n"},
       {"set T '-[A z]' --name n", 1, "T: -[A z]: Hook not found\n"},
       {"remove T X", 1, "T: X: several hooks have that name; use"},
       {"remove T", 2, "--hook is required"},
       {"list nowhere", 1, "nowhere: "},
       {"list Broken", 1, "Broken/Manifest.json: configuration: expected"}});
  EXPECT_EQ(manifest(), before);
}

}  // namespace
}  // namespace tavlen
