#include <gmock/gmock.h>

#include "tests/cli/CommandStoreTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kError = "tavlen: error: ";

TEST_F(CommandStoreTest, NewMakesATweakOrSaysWhatIsWrong) {
  EXPECT_THAT(run("list").err, StartsWith("tavlen: nothing is stored in "));
  const std::string id = newTweak("N\n");
  EXPECT_EQ(contents(stored(id) + "/Manifest.json"),
            R"({"configuration":{"name":"N\n","color":"lightGreen","bundleID":"com.example.notes",)"
            R"("glyph":{"icon":"tools","style":"solid"}},"overrides":[],"hooks":[]})");
  EXPECT_THAT(run("new A --app com.gone --glyph apple").err,
              StartsWith("tavlen: warning: com.gone: no app with that identifier"));
  expectRefused("new", {{"A --app x --glyph tolls", 2,
                         "--glyph: unknown glyph \"tolls/solid\"; did you mean tools/solid?\n"},
                        {"A --app x --glyph apple/solid", 2,
                         "--glyph: unknown glyph \"apple/solid\"; did you mean apple/brands?\n"},
                        {"A --app x --glyph /", 2, "--glyph: unknown glyph \"/\"\n"},
                        {"A --app x --color blue", 2, "--color: blue not in {lightGreen,"},
                        {"\xFF --app x", 2, "NAME: it is not UTF-8\n"},
                        {"'' --app x", 2, "NAME: it is empty\n"},
                        {"A --app ./gone.app", 1, "./gone.app: No such file or directory\n"},
                        {"A", 2, "--app is required\n"}});
  EXPECT_EQ(std::distance(fs::directory_iterator(folder() / stored("")), {}), 2)
      << "what is refused makes nothing";
}

TEST_F(CommandStoreTest, ListSortsWhatOpensAndCountsTheRest) {
  const std::string alpha = newTweak("alpha");
  const std::string beta = newTweak("Beta", "com.gone");
  writeCollection("C", R"(a\u001b collection)", "");
  EXPECT_EQ(run("install alpha").err, "");
  const Result all = run("list");
  EXPECT_EQ(all.err, "");
  EXPECT_THAT(all.out, StartsWith("NAME              KIND        APP                INSTALLED  "
                                  "IDENTIFIER\na\\x1b collection  collection  "
                                  "com.example.notes             C.collection\nalpha"));
  EXPECT_THAT(run("list --json").out,
              EndsWith(R"({"name":"alpha","kind":"tweak","bundleID":"com.example.notes",)"
                       R"("installed":true,"identifier":")" +
                       alpha + R"("},{"name":"Beta","kind":"tweak","bundleID":"com.gone",)" +
                       R"("installed":false,"identifier":")" + beta + "\"}]\n"));
  for (int i = 0; i < 300; ++i) write(stored("broken" + std::to_string(i)) + "/x", "");
  write(stored(".hidden"), "");
  fs::create_directory(folder() / (stored(beta) + ".collection"));
  const Result some = run("list");
  EXPECT_EQ(some.out, all.out);
  EXPECT_EQ(some.err.substr(0, 28), "tavlen: warning: 301 entries");
  fs::remove_all(folder() / stored(""));
  write(stored("").substr(0, stored("").size() - 1), "");
  EXPECT_THAT(run("list").err, EndsWith("/Tweaks: Not a directory\n"));
}

TEST_F(CommandStoreTest, ItemsGoByIdentifierNameOrPath) {
  const std::string id = newTweak("My tweak");
  write(stored(id) + "/script.objs", "one();");
  writeTweak("here", "");
  for (const std::string& name :
       {id, std::string("My tweak"), "./" + stored(id), stored(id) + "/"}) {
    EXPECT_EQ(run("build", {name}).out, "one();") << name;
    EXPECT_THAT(run("show", {name}).out, HasSubstr("Identifier: " + id + "\n")) << name;
  }
  writeCollection("C", "Both", "\"" + id + R"(","../../x")");
  EXPECT_THAT(
      run("show Both").out,
      EndsWith("Tweaks:     " + id + "  My tweak\n            ../../x  (cannot be opened)\n"));
  EXPECT_THAT(run("show C.collection --json").out, HasSubstr(R"("kind":"collection","path":")"));
  newTweak("My");
  newTweak("My");
  write(stored("BAD") + "/Manifest.json", "{");
  write(stored("BAD.collection"), "[]");
  const std::string store = (folder() / "tree").string() + std::string(kTweaksDir) + "/";
  for (const char* command : {"show", "install", "delete", "uninstall"}) {
    expectRefused(
        command,
        {{"'my tweak'", 1, "my tweak: no stored tweak or collection has that identifier or name\n"},
         {"My", 1, "My: several items have that name; name one by its identifier: "},
         {"BAD", 1, store + "BAD/Manifest.json: The given data was not valid JSON: "},
         {"BAD.collection", 1, store + "BAD.collection: expected a dictionary, found an array\n"},
         {"./BAD", 1, "./BAD: Not found\n"},
         {"tree", 1, "tree: Missing Manifest.json\n"},
         {"here/Manifest.json", 1, "here/Manifest.json: Unknown tweak type\n"}});
  }
  EXPECT_EQ(run("build Both").err, kError + "Both: is a collection, not a tweak\n");
}

TEST_F(CommandStoreTest, DeleteTakesAwayWhatTheStoreHolds) {
  const std::string id = newTweak("A");
  writeCollection("C", "C", "\"" + id + "\"");
  writeTweak("mine", "");
  EXPECT_EQ(run("delete mine").err, kError + "mine: is not in " + (folder() / "tree").string() +
                                        std::string(kTweaksDir) + "\n");
  EXPECT_EQ(run("delete C").status, 0);
  EXPECT_EQ(run("install A").status, 0);
  newTweak("B");
  EXPECT_EQ(run("delete B").status, 0);
  EXPECT_THAT(run("show A").out, HasSubstr("Installed:  yes\n")) << "another one's";
  helper("exit 3");
  const Result forced = run("delete A");
  EXPECT_EQ(forced.status, 0);
  EXPECT_EQ(forced.out + forced.err, "") << "the record went before the helper failed";
  EXPECT_THAT(run("list").err, StartsWith("tavlen: nothing is stored"));
  EXPECT_TRUE(fs::exists(folder() / "mine"));

  newTweak("B");
  EXPECT_EQ(run("install B").status, 1) << "the helper still fails";
  write("tree/var/mobile/Library/Application Support/Marrowgleam/.TemporaryItems", "");
  const Result stuck = run("delete B");
  EXPECT_EQ(stuck.status, 1);
  EXPECT_THAT(stuck.err, StartsWith(kError));
  EXPECT_THAT(run("list").out, HasSubstr("B     tweak"));
}

}  // namespace
}  // namespace tavlen
