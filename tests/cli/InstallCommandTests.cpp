#include <gmock/gmock.h>

#include "tests/cli/CommandStoreTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;

const std::string kNoDevice =
    "tavlen: not a running device: the app is not ended and the home screen not restarted\n";

class InstallCommandTest : public CommandStoreTest {
 protected:
  /// What the app's folder of installed tweaks holds of files named `name`, one after the other.
  std::string installed(const std::string& name) const {
    std::string found;
    const fs::path directory =
        folder() / ("tree" + std::string(kInstalledTweaksDir)) / "com.example.notes";
    if (!fs::exists(directory)) return "nothing";
    for (const auto& entry : fs::recursive_directory_iterator(directory)) {
      if (entry.path().filename() == name) found += contents(entry.path());
    }
    return found;
  }
};

TEST_F(InstallCommandTest, InstallsAndUninstalls) {
  const std::string id = newTweak("T");
  write(stored(id) + "/script.objs", "one();");
  write(stored(id) + "/Executables/tool", "tool");
  EXPECT_EQ(run("uninstall T").err, "tavlen: error: T: is not installed\n");
  EXPECT_EQ(run("install T").err, kNoDevice);
  EXPECT_EQ(installed("code.js") + installed("tool"), "one();");
  EXPECT_EQ(run("install T --executables").status, 0);
  EXPECT_EQ(installed("code.js") + installed("tool"), "one();tool");
  write("share/ob.js", "OBJSTranspiler = {transpile() { return {code: 'other', map: ''}; }};");
  EXPECT_EQ(run("install T --transpiler share").status, 0);
  EXPECT_EQ(installed("code.js"), "other");
  EXPECT_THAT(run("show T").out, HasSubstr("Installed:  yes\n"));

  writeCollection("C", "C", "\"" + id + R"(","gone")");
  EXPECT_EQ(run("uninstall C").status, 1) << "its member is, but it is not";
  EXPECT_EQ(run("install C").err,
            "tavlen: warning: the member gone cannot be opened and is left out\n" + kNoDevice);
  EXPECT_EQ(installed("code.js"), "one();");
  EXPECT_EQ(run("uninstall T").status, 1);
  EXPECT_EQ(run("uninstall C").err, kNoDevice);
  EXPECT_EQ(installed("code.js"), "nothing");

  // What is installed need not be stored.
  EXPECT_EQ(run("install T").status, 0);
  fs::remove_all(folder() / stored(id));
  EXPECT_EQ(run("uninstall --app com.example.notes").status, 0);
  EXPECT_EQ(run("uninstall --app com.example.notes").err,
            "tavlen: error: com.example.notes: no tweak is installed\n");
  EXPECT_EQ(run("uninstall").status, 2);
  EXPECT_EQ(run("uninstall T --app x").status, 2);
}

TEST_F(InstallCommandTest, AFailureIsShownAtItsPlace) {
  const std::string good = newTweak("good");
  const std::string bad = newTweak("bad");
  write(stored(bad) + "/script.objs", "fine();\n[a b:];\n");
  writeCollection("C", "C", "\"" + good + "\",\"" + bad + "\"");
  newTweak("elsewhere", "com.gone");
  const std::string folderOfBad = (folder() / stored(bad)).string();
  const std::string syntax =
      folderOfBad + "/script.objs:2:6: error: Unexpected token\n    [a b:];\n" +
      std::string(9, ' ') + "^\ntavlen: error: " + folderOfBad + ": does not build\n";
  EXPECT_EQ(run("install good").status, 0);
  for (const char* item : {"bad", "C"}) {
    const Result result = run("install", {item});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, kNoDevice + syntax);
  }
  write("share/ob.js", "OBJSTranspiler = {transpile() { throw new RangeError('deep\\x1b'); }};");
  EXPECT_THAT(run("install good --transpiler share").err,
              testing::MatchesRegex(".*tavlen: error: the transpiler failed: RangeError: deep.x1b\n"
                                    "    transpile@ob.js:1:[0-9]+\n"));
  EXPECT_THAT(run("install elsewhere").err, EndsWith("not found with bundle ID: com.gone\n"));
  EXPECT_THAT(run("show good").out, HasSubstr("Installed:  yes\n")) << "as it was";
  helper("exit 4");
  EXPECT_THAT(run("install good").err, EndsWith("/kvfileops: terminated(4)\n"));
}

}  // namespace
}  // namespace tavlen
