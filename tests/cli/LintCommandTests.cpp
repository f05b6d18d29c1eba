#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

using testing::AllOf;
using testing::HasSubstr;

/// A tweak with a value that names a.png, code that names b.png, and files.
class LintCommandTest : public CommandTest {
 protected:
  LintCommandTest() {
    writeTweak("./T", hookJSON("a:", "v24@0:8@16", R"("0":{"type":"Image","filename":"a.png"})") +
                          "," +
                          hookJSON("b", "@16@0:8", R"("-1":{"type":"Code","code":"@\"b.png\""})"));
    for (const char* name : {"a.png", "b.png", "c.png", "sub/d.txt", ".keep"})
      write(std::string("./T/Resources/") + name, name);
  }
  std::string files() const { return run("resource list ./T").out; }
};

TEST_F(LintCommandTest, CheckTellsProgramsWhatItTellsPeople) {
  write("./bad/Manifest.json", "{\"configuration\":1}");
  write("./T/script.objs", "f(\n");
  std::string manifest = contents("./T/Manifest.json");
  manifest.insert(manifest.size() - 1, ",\n \"hoks\":[]");
  write("./T/Manifest.json", manifest);
  const Result checked = run("check ./T ./bad --json");
  EXPECT_EQ(checked.status, 1);
  EXPECT_EQ(checked.err, "");
  EXPECT_THAT(checked.out,
              HasSubstr(R"([{"file":"./T/Manifest.json","line":2,"column":2,"place":"hoks",)"
                        R"("severity":"warning","code":"unknown-key","message":)"));
  EXPECT_THAT(checked.out, HasSubstr(R"({"file":"./T/Resources/c.png","severity":"warning",)"
                                     R"("code":"unused-resource",)"));
  EXPECT_THAT(checked.out, HasSubstr(R"({"file":"./T/script.objs","line":2,"column":1,)"
                                     R"("severity":"error","code":"syntax-error",)"));
  EXPECT_THAT(checked.out, HasSubstr(R"({"file":"./bad/Manifest.json","line":1,"column":18,)"
                                     R"("place":"configuration","severity":"error",)"
                                     R"("code":"unexpected-value","message":"expected a dic)"));
  EXPECT_THAT(run("check ./T --classes").err,
              AllOf(HasSubstr(": no app has this identifier (tavlen apps lists the apps)\n"),
                    HasSubstr("./T/script.objs:2:1: error: ")));
  write("./T/script.objs", "");
  EXPECT_EQ(run("check ./T").status, 0);
  EXPECT_EQ(run("check ./T --strict").status, 1);
  EXPECT_EQ(run("check ./T --strict --json").status, 1);
  for (const char* command : {"build ./T", "export ./T -o T.tvx", "check ./T.tvx"})
    EXPECT_THAT(run(command).err, HasSubstr("/Resources/sub/d.txt: warning: no value")) << command;
}

TEST_F(LintCommandTest, ResourcesAreRemovedUnlessTheyAreUsed) {
  EXPECT_EQ(files(),
            "NAME       BYTES  USED BY\n.keep      5\na.png      5      "
            "hooks[0].args.0\nb.png      5      hooks[1].args.-1\nc.png      5      unused\n"
            "sub/d.txt  9      unused\n");
  expectRefused("resource remove ./T",
                {{"a.png", 1, "Resources/a.png: is used by hooks[0].args.0; use --force"},
                 {"c.png e.png", 1, "Resources/e.png: no such resource"},
                 {"../script.objs", 1, "Resources/../script.objs: no such resource"}});
  EXPECT_EQ(run("resource prune ./T --dry-run").out,
            "would remove c.png\nwould remove sub/d.txt\n");
  EXPECT_EQ(run("resource prune ./T --json").out,
            R"([{"name":"c.png","size":5,"uses":0},{"name":"sub/d.txt","size":9,"uses":0}])"
            "\n");
  EXPECT_FALSE(fs::exists(folder() / "T/Resources/sub")) << "empty";
  EXPECT_EQ(run("resource remove ./T a.png --force").out, "removed a.png\n");
  EXPECT_EQ(files(), "NAME   BYTES  USED BY\n.keep  5\nb.png  5      hooks[1].args.-1\n");
}

TEST_F(LintCommandTest, AnEditTellsOfFilesThatItLeavesUnused) {
  EXPECT_THAT(run("param set ./T '-[A a:]' 0 nil").err,
              HasSubstr("Resources/a.png is no longer used"));
  EXPECT_EQ(run("hook remove ./T '-[A a:]'").err, "") << "only once";
}

}  // namespace
}  // namespace tavlen
