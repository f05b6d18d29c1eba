#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class HookCommandTest : public CommandTest {
 protected:
  HookCommandTest() {
    writeTweak("T", hookJSON("a:", "v24@0:8@16", R"("0":{"type":"Nil"})") + ",null," +
                        hookJSON("b", "v16@0:8"));
  }
  std::string manifest() const { return contents("T/Manifest.json"); }
  std::string list() const { return run({"hook", "list", "T", "--json"}).out; }
};

TEST_F(HookCommandTest, ListsHooksAsTheyAreNamed) {
  writeTweak("Long", hookJSON(std::string(100, 'x') + ":", "v24@0:8@16"));
  writeTweak("None", "null");
  EXPECT_EQ(
      run({"hook", "list", "T"}).out,
      "SIGNATURE   REPLACES  HOOK\nv24@0:8@16  0         -[A a:]\nv16@0:8               -[A b]\n");
  EXPECT_THAT(run({"hook", "list", "Long"}).out,
              HasSubstr("-[A " + std::string(100, 'x') + ":]\n"));
  EXPECT_EQ(run({"hook", "list", "None"}).out, "");
  EXPECT_EQ(list(), "[" + hookJSON("a:", "v24@0:8@16", R"("0":{"type":"Nil"})") + "," +
                        hookJSON("b", "v16@0:8") + "]\n");
}

TEST_F(HookCommandTest, AddsAtTheEndAndKeepsNulls) {
  const Result result = run({"hook", "add", "T", "A", "c:", "--signature", "v24@0:8@16",
                             "--class-method", "--name", "See"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err + result.out, "");
  EXPECT_THAT(manifest(), HasSubstr("}}},null,{"));
  EXPECT_THAT(manifest(),
              HasSubstr(R"(,{"customName":"See","className":"A","selector":"c:",)"
                        R"("signature":"v24@0:8@16","isClassMethod":true,"args":{}}]})"));
  const Result odd = run({"hook", "add", "T", "A", "c:", "--signature", "v16@0:8"});
  EXPECT_EQ(odd.status, 0) << "an instance method of that name is another hook";
  EXPECT_EQ(odd.err,
            "tavlen: warning: the signature \"v16@0:8\" does not fit the selector \"c:\"\n");
}

TEST_F(HookCommandTest, AHookIsNamedByItsMethodOrItsName) {
  ASSERT_EQ(run({"hook", "add", "T", "A", "b", "--signature", "v16@0:8", "--class-method", "--name",
                 "Bee"})
                .status,
            0);
  const std::string before = manifest();
  const std::vector<std::vector<std::string>> names = {
      {"+[A b]"}, {"Bee"}, {"--hook", "+[A b]"}, {"--", "+[A b]"}};
  for (const std::vector<std::string>& name : names) {
    std::vector<std::string> words = {"hook", "remove", "T"};
    words.insert(words.end(), name.begin(), name.end());
    EXPECT_EQ(run(words).err, "") << name.front();
    EXPECT_EQ(list(), "[" + hookJSON("a:", "v24@0:8@16", R"("0":{"type":"Nil"})") + "," +
                          hookJSON("b", "v16@0:8") + "]\n");
    write("T/Manifest.json", before);
  }
  EXPECT_EQ(run({"hook", "remove", "T", "-[A b]"}).status, 0);
  EXPECT_THAT(list(), HasSubstr("\"Bee\""));
  EXPECT_EQ(run({"hook", "remove", "T", "--", "-[A a:]"}).status, 0);
}

TEST_F(HookCommandTest, ChangesWhatIsAskedForOnly) {
  struct Case {
    std::vector<std::string> options;
    std::string hook;
  };
  const std::string rest = R"("isClassMethod":false,"args":{"0":{"type":"Nil"}}})";
  const std::vector<Case> cases = {
      {{"--selector", "c:"},
       R"({"className":"A","selector":"c:","signature":"v24@0:8@16",)" + rest},
      {{"--class", "B", "--signature", "@24@0:8@16"},
       R"({"className":"B","selector":"a:","signature":"@24@0:8@16",)" + rest},
      {{"--name", "N"},
       R"({"customName":"N","className":"A","selector":"a:","signature":"v24@0:8@16",)" + rest},
      {{"--class-method"},
       R"({"className":"A","selector":"a:","signature":"v24@0:8@16","isClassMethod":true,)"
       R"("args":{"0":{"type":"Nil"}}})"},
  };
  const std::string before = manifest();
  for (const Case& change : cases) {
    std::vector<std::string> words = {"hook", "set", "T", "-[A a:]"};
    words.insert(words.end(), change.options.begin(), change.options.end());
    EXPECT_EQ(run(words).err, "") << change.hook;
    EXPECT_THAT(manifest(), HasSubstr(":[" + change.hook + ",null,"));
    write("T/Manifest.json", before);
  }
  run({"hook", "set", "T", "-[A a:]", "--name", "N"});
  EXPECT_EQ(run({"hook", "set", "T", "N", "--no-name"}).status, 0);
  EXPECT_EQ(manifest(), before);
}

TEST_F(HookCommandTest, RefusesAndChangesNothing) {
  write(
      "T/Manifest.json",
      R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b"},"overrides":[],"hooks":[)" +
          hookJSON("a:", "v24@0:8@16") + "," + hookJSON("b", "v16@0:8") +
          R"(,{"customName":"X","className":"B","selector":"x","signature":"v","isClassMethod":false,"args":{}})"
          R"(,{"customName":"X","className":"B","selector":"y","signature":"v","isClassMethod":false,"args":{}}]})");
  write("Broken/Manifest.json", R"({"configuration":1})");
  struct Case {
    std::vector<std::string> words;
    int status;
    std::string error;
  };
  const std::string failure = "tavlen: error: ";
  const std::vector<Case> cases = {
      {{"add", "T", "A", "b", "--signature", "v16@0:8"},
       1,
       failure + "T: -[A b]: the tweak hooks that method already\n"},
      {{"add", "T", "A", "c\xFF", "--signature", "v"}, 1, failure + "T: -[A c"},
      {{"add", "T", "A", "c"}, 2, "--signature is required"},
      {{"add", "T", "", "c", "--signature", "v"}, 2, "CLASS: it is empty"},
      {{"set", "T", "-[A a:]"}, 2, "At least 1 option"},
      {{"set", "T", "-[A a:]", "--name", "n", "--no-name"}, 2, ""},
      {{"set", "T", "-[A a:]", "--selector", "b"},
       1,
       failure + "T: -[A a:]: the tweak hooks that method already\n"},
      {{"set", "T", "-[A z]", "--name", "n"}, 1, failure + "T: -[A z]: Hook not found\n"},
      {{"remove", "T", "+[A b]"}, 1, failure + "T: +[A b]: Hook not found\n"},
      {{"remove", "T", "X"}, 1, failure + "T: X: several hooks have that name; name one as"},
      {{"remove", "T"}, 2, "--hook is required"},
      {{"list", "nowhere"}, 1, failure + "nowhere: "},
      {{"list", "Broken"}, 1, failure + "Broken/Manifest.json: configuration: expected"},
  };
  const std::string before = manifest();
  for (const Case& wrong : cases) {
    std::vector<std::string> words = {"hook"};
    words.insert(words.end(), wrong.words.begin(), wrong.words.end());
    const Result result = run(words);
    EXPECT_EQ(result.status, wrong.status) << wrong.error;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, StartsWith(wrong.error));
    EXPECT_EQ(manifest(), before);
  }
}

}  // namespace
}  // namespace tavlen
