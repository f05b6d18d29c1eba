#include <gmock/gmock.h>
#include <sys/file.h>

#include <memory>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/image/Image.h"
#include "tests/cli/RunningCommand.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class StoreLockTest : public CommandStoreTest {
 protected:
  /// Locks a folder in folder() as another command does.
  FileDescriptor locked(const std::string& name) const {
    FileDescriptor descriptor = FileDescriptor::open(folder() / name, O_RDONLY | O_DIRECTORY);
    EXPECT_EQ(::flock(descriptor.get(), LOCK_EX | LOCK_NB), 0);
    return descriptor;
  }
  std::unique_ptr<RunningCommand> start(std::vector<std::string> words) const {
    words.insert(words.end(), {"--root", (folder() / "tree").string()});
    return std::make_unique<RunningCommand>(words, std::vector<std::string>());
  }
};

TEST_F(StoreLockTest, NoneOfManyConcurrentEditsIsLost) {
  newTweak("T");
  std::vector<std::unique_ptr<RunningCommand>> commands;
  for (int i = 0; i < 16; ++i) {
    commands.push_back(
        start({"hook", "add", "T", "-[A b" + std::to_string(i) + "]", "--signature", "v16@0:8"}));
  }
  for (const auto& command : commands) EXPECT_EQ(command->status(), 0);
  const std::string hooks = run("hook list T").out;
  EXPECT_EQ(std::count(hooks.begin(), hooks.end(), '\n'), 17) << hooks;
}

TEST_F(StoreLockTest, EveryEditWaitsAndNothingElseDoes) {
  const std::string id = newTweak("T");
  EXPECT_EQ(run("collection new C --app com.example.notes").status, 0);
  EXPECT_EQ(run("hook add T '-[A b]' --signature v16@0:8").status, 0);
  EXPECT_EQ(run("export T").status, 0);
  writeTweak("outside", "");
  write("script", "x();");
  write("picture", Image(1, 1, {1, 2, 3, 255}).pngData());
  environment({"EDITOR=f() { echo y >\"$1\"; }; f"});
  const std::string edits[] = {"new N --app a.b",
                               "collection new N --app a.b",
                               "hook add T '-[A c]' --signature v",
                               "hook set T '-[A b]' --name N",
                               "hook remove T '-[A b]'",
                               "param set T '-[A b]' -1 nil",
                               "param insert T '-[A b]' 0.0 nil",
                               "param remove T '-[A b]' 0",
                               "param move T '-[A b]' 0.0 0",
                               "override add T DisplayName x",
                               "override set T DisplayName x",
                               "override remove T DisplayName",
                               "script set T script",
                               "script edit T",
                               "icon set T picture",
                               "icon clear T",
                               "icon clear './" + stored(id) + "'",
                               "collection add C T",
                               "collection move C T 0",
                               "collection remove C T",
                               "set T --color darkRed",
                               "script clear T",
                               "delete " + id,
                               "import T.tvx"};
  const std::string others[] = {
      "list",    "show T",      "hook list T",       "script show T",
      "check T", "install T",   "collection list C", "export T -o O.tvx",
      "apps",    "uninstall T", "override list T",   "icon clear ./outside"};
  const FileDescriptor store = locked(stored(""));
  for (const std::string& line : edits) {
    const Result result = run("--lock-timeout 0 " + line);
    EXPECT_EQ(result.status, 1) << line;
    EXPECT_THAT(result.err, HasSubstr("Tweaks: another command is still editing it after 0 s"));
  }
  for (const std::string& line : others) {
    const Result result = run("--lock-timeout 0 " + line);
    EXPECT_EQ(result.status, 0) << line << result.err;
  }
  // The folder that contains a tweak outside the store.
  const FileDescriptor outside = locked(".");
  EXPECT_THAT(run("--lock-timeout 0 icon clear outside").err, HasSubstr("another command"));
}

TEST_F(StoreLockTest, WaitsSaysSoAndGoesOn) {
  newTweak("T");
  FileDescriptor store = locked(stored(""));
  const auto command = start({"icon", "clear", "T"});
  EXPECT_THAT(command->until(), HasSubstr("tavlen: waiting for another command"));
  store = FileDescriptor();
  EXPECT_EQ(command->status(), 0);
}

TEST_F(StoreLockTest, IsNotHeldWhileAnEditorOrTheHelperRuns) {
  const std::string id = newTweak("T");
  const std::string tryLock = "flock -n '" + (folder() / stored("")).string() + "' true";
  environment({"EDITOR=f() { echo x >\"$1\"; " + tryLock + "; }; f"});
  EXPECT_EQ(run("script edit T").err, "");
  EXPECT_EQ(run("install T").status, 0);
  helper("exec '" + paths().fileOperations + "' \"$@\" && " + tryLock);
  EXPECT_EQ(run("delete T").err.find("could not"), std::string::npos);
}

}  // namespace
}  // namespace tavlen
