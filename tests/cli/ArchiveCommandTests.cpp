#include <gtest/gtest.h>

#include <algorithm>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

/// Exports and imports what the store of the tree holds.
class ArchiveCommandTest : public CommandStoreTest {
 protected:
  std::string only(const std::string& line, const std::vector<std::string>& more = {}) const {
    const Result result = run(line, more);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    return result.out.substr(0, result.out.find('\n'));
  }
  std::size_t entries(const std::string& name) const {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder() / name), fs::directory_iterator()));
  }
};

TEST_F(ArchiveCommandTest, AnItemComesBackUnderNewIdentifiers) {
  const std::string tweak = newTweak("a/b:c");
  write(stored(tweak) + "/script.objs", "x();");
  const std::string collection = only("collection new Both --app com.example.notes");
  only("collection add", {collection, tweak, newTweak("B")});
  fs::create_directories(folder() / "out");
  write("out/old.tvx", "old");
  const std::pair<std::string, std::string> rows[] = {
      {tweak, "a-b-c.tvx"},
      {tweak + " -o out", "out/a-b-c.tvx"},
      {tweak + " -o out/old.tvx --force", "out/old.tvx"},
      {collection + " -o c.tvxc", "c.tvxc"}};
  for (const auto& [item, archive] : rows) {
    EXPECT_EQ(only("export " + item), archive);
  }
  EXPECT_EQ(run("export a/b:c -o out").status, 1) << "a path, by its slash";
  EXPECT_EQ(contents(stored(only("import out/old.tvx")) + "/script.objs"), "x();");
  const std::string both = only("import c.tvxc");
  const std::string members = run("collection list", {both, "--json"}).out;
  EXPECT_EQ(members.find(tweak), std::string::npos);
  EXPECT_NE(members.find(R"({"name":"a\/b:c",)"), std::string::npos) << members;
  // Nothing but the store and what was exported.
  EXPECT_EQ(entries(stored("..")), 1U);
  EXPECT_EQ(entries(stored("")), 7U);
  EXPECT_EQ(entries("out"), 2U);
}

TEST_F(ArchiveCommandTest, AFailureIsOneLineAndChangesNothing) {
  newTweak("A");
  write("old.tvx", "old");
  fs::create_directories(folder() / "folder.tvx");
  expectRefused("",
                {{"export A -o old.tvx", 1, "old.tvx: already exists; use --force to replace it\n"},
                 {"export nowhere", 1,
                  "nowhere: no stored tweak or collection has that identifier or name\n"},
                 {"export A -o nowhere/a.tvx", 1, "nowhere/a.tvx: No such file or directory\n"},
                 {"import nowhere.tvx", 1, "nowhere.tvx: No such file or directory\n"},
                 {"import old.zip", 1, "old.zip: Unknown tweak type\n"},
                 {"import folder.tvx", 1, "folder.tvx: Is a directory\n"},
                 {"import old.tvx", 1, "old.tvx: "}});
  EXPECT_EQ(contents("old.tvx"), "old");
  EXPECT_EQ(entries(stored("")), 1U);
  EXPECT_EQ(entries(stored("..")), 1U);
}

TEST_F(ArchiveCommandTest, TheOtherFilesAreImportedAllTheSame) {
  const std::string archive = only("export", {newTweak("A")});
  const Result result = run("import nowhere.tvx", {archive, archive});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 2);
  EXPECT_EQ(entries(stored("")), 3U);
}

TEST_F(ArchiveCommandTest, WarnsOfMembersThatDoNotOpen) {
  writeCollection("C", "C", R"("gone","C.collection")");
  const Result result = run("export C -o c.zip");
  EXPECT_EQ(result.status, 0);
  for (const std::string text :
       {"gone: this member", "C.collection: this member", "c.zip: import recognises"}) {
    EXPECT_NE(result.err.find("tavlen: warning: " + text), std::string::npos) << result.err;
  }
  fs::rename(folder() / "c.zip", folder() / "c.TVXC");
  EXPECT_EQ(run("import c.TVXC").status, 1);
}

}  // namespace
}  // namespace tavlen
