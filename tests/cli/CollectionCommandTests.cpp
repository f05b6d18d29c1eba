#include <gtest/gtest.h>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

class CollectionCommandTest : public CommandStoreTest {
 protected:
  /// The members' names in the collection "C", "-" for missing ones.
  std::string members() const {
    const Result list = run("collection list C");
    EXPECT_EQ(list.status, 0) << list.err;
    std::string names;
    for (std::size_t at = list.out.find('\n'); at + 1 < list.out.size();
         at = list.out.find('\n', at + 1)) {
      names += list.out.at(at + 1);
    }
    return names;
  }
};

TEST_F(CollectionCommandTest, MembersAreAddedAndRemoved) {
  const Result made = run("collection new C --app com.example.notes --color darkRed --glyph star");
  ASSERT_EQ(made.status, 0) << made.err;
  const std::string file = stored(made.out.substr(0, made.out.size() - 1));
  EXPECT_EQ(contents(file),
            R"({"configuration":{"name":"C","color":"darkRed","bundleID":"com.example.notes",)"
            R"("glyph":{"icon":"star","style":"solid"}},"tweaks":[]})");
  const std::string a = newTweak("A");
  const std::string b = newTweak("B");
  newTweak("[WIP]");
  newTweak("O", "com.other");
  writeTweak("loose", "");
  const struct {
    std::string line;
    std::string error;
    std::string members;
  } steps[] = {
      {"add C B " + a, "", "BA"},
      {"add C [WIP]", "", "BA["},
      {"remove C [WIP]", "", "BA"},
      {"add C A", "A: is already in the collection", "BA"},
      {"add C O", "O: Bundle ID mismatch (expected 'com.example.notes' but found 'com.other')",
       "BA"},
      {"remove C B O", "O: is not in the collection", "BA"},
      {"add C C", "C: is a collection, not a tweak", "BA"},
      {"add " + b + " A", b + ": is a tweak, not a collection", "BA"},
      {"add C loose", "loose: is not in " + (folder() / stored("")).parent_path().string(), "BA"},
      {"remove C B", "", "A"},
      {"add '" + file + "' B", "", "AB"}};
  for (const auto& [line, error, left] : steps) {
    const Result result = run("collection " + line);
    EXPECT_EQ(result.err, error.empty() ? "" : "tavlen: error: " + error + "\n");
    EXPECT_EQ(result.status, error.empty() ? 0 : 1);
    EXPECT_EQ(members(), left);
  }
}

TEST_F(CollectionCommandTest, MissingMembersAreShownAndRemovedByIdentifier) {
  const std::string a = newTweak("A");
  writeCollection("C", "C", R"("../../x",")" + a + R"(","gone","gone","C.collection")");
  EXPECT_EQ(members(), "-A---");
  EXPECT_EQ(run("collection list C --json").out,
            R"([{"identifier":"..\/..\/x","missing":true},{"name":"A","identifier":")" + a +
                R"(","missing":false},{"identifier":"gone","missing":true},)"
                R"({"identifier":"gone","missing":true},)"
                R"({"identifier":"C.collection","missing":true}])"
                "\n");
  EXPECT_EQ(run("collection remove C gone ../../x").err, "");
  EXPECT_EQ(members(), "A-");
  EXPECT_EQ(run("collection").status, 2);
  EXPECT_EQ(run("collection add C").status, 2);
}

}  // namespace
}  // namespace tavlen
