#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;
using testing::StartsWith;

TEST_F(CommandStoreTest, AScriptIsStoredWholeOrNotAtAll) {
  const std::string id = newTweak("T");
  const std::string script = stored(id) + "/script.objs";
  EXPECT_EQ(run("script show T").out, "");
  write("new", "caf\u00E9();\r\n");
  EXPECT_EQ(run("script set T new").err, "");
  setInput("new");
  EXPECT_EQ(run("script set T -").err, "");
  EXPECT_EQ(run("script show T").out, contents("new"));
  write("bad", "\xFFx");
  setInput("bad");
  expectRefused("script set T", {{"bad", 1, "bad: is not UTF-8\n"},
                                 {"-", 1, "standard input: is not UTF-8\n"},
                                 {".", 1, ".: Is a directory\n"},
                                 {"gone", 1, "gone: No such file or directory\n"}});
  EXPECT_EQ(contents(script), contents("new"));
  fs::remove(folder() / script);
  fs::create_directory(folder() / script);
  EXPECT_EQ(run("script show T").status, 1);
  EXPECT_EQ(run("script set T new").status, 1);
}

TEST_F(CommandStoreTest, AnEditedScriptIsNeverLost) {
  const std::string script = stored(newTweak("T")) + "/script.objs";
  const struct {
    std::string editor;
    std::string stored;
    std::string error;  ///< its beginning
    bool isKept;
  } rows[] = {
      {"sed -i s/old/new/", "new", "", false},
      {"f() { rm \"$1\"; printf new >\"$1\"; }; f", "new", "", false},
      {"true", "old", "tavlen: the script is unchanged\n", false},
      {"false", "old", "tavlen: error: false: terminated(1)\n", false},
      {"f() { printf new >\"$1\"; exit 3; }; f", "old", "tavlen: error: ", true},
      {"f() { printf '\\377' >\"$1\"; }; f", "old", "tavlen: error: ", true},
      {"f() { printf new >\"$1\"; printf other >'" + (folder() / script).string() + "'; }; f",
       "other",
       "tavlen: error: the script changed on disk while you were editing it; your text is in",
       true},
  };
  for (const auto& row : rows) {
    write(script, "old");
    environment({"EDITOR=" + row.editor});
    const Result result = run("script edit T");
    EXPECT_EQ(result.status, row.error.starts_with("tavlen: error") ? 1 : 0);
    EXPECT_EQ(contents(script), row.stored) << row.editor;
    EXPECT_THAT(result.err, StartsWith(row.error)) << row.editor;
    EXPECT_EQ(result.err.empty(), row.error.empty()) << result.err;
    const std::size_t kept = result.err.find("is in ");
    ASSERT_EQ(kept != std::string::npos, row.isKept) << row.editor;
    std::size_t leavings = 0;
    for (const auto& entry : fs::directory_iterator(folder())) {
      if (!entry.path().filename().string().starts_with("tavlen-")) continue;
      ++leavings;
      EXPECT_TRUE(fs::exists(entry.path() / "script.objs"));
      fs::remove_all(entry.path());
    }
    EXPECT_EQ(leavings, row.isKept ? 1U : 0U) << row.editor;
  }
  environment({"VISUAL=sed -i s/old/visual/", "EDITOR=false"});
  write(script, "old");
  EXPECT_EQ(run("script edit T").status, 0);
  EXPECT_EQ(contents(script), "visual");
}

}  // namespace
}  // namespace tavlen
