#include <sys/stat.h>
#include <unistd.h>

#include "tests/tools/HelperTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

using CleanupTest = HelperTest;

TEST_F(CleanupTest, UnderstandsItsThreeCommandsOnly) {
  writeTweak("a.b/f");
  const std::string before = everything();
  const std::string path = tweaks("a.b").string();
  const std::vector<std::string> rows[] = {{},
                                           {"cleanup"},
                                           {"cleanup", path},
                                           {"cleanup", path, "0", "x"},
                                           {"cleanup", path, "2"},
                                           {"cleanup", path, ""},
                                           {"cleanup", path, "01"},
                                           {"Cleanup", path, "0"},
                                           {"remove", path, "0"},
                                           {"copy", path},
                                           {"fetch-logs", "a.b"},
                                           {"", "", ""}};
  for (const auto& words : rows) {
    const Result result = run(words);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(words);
    EXPECT_NE(result.err.find("usage: kvfileops cleanup"), std::string::npos);
  }
  for (const char* root : {"relative", "/nowhere/at/all", "/dev/null"}) {
    setRoot(root);
    EXPECT_EQ(status({"cleanup", path, "0"}), 1) << root;
  }
  EXPECT_EQ(everything(), before);
}

TEST_F(CleanupTest, RefusesWhatIsNoDirectChildOfTheTweaks) {
  writeTweak("a.b/inner/f");
  write("var/mobile/other/f", "x");
  fs::create_directory(outside() / "d");
  fs::create_directory_symlink(outside(), tweaks("link"));
  fs::create_directory_symlink("a.b", tweaks("near"));
  const std::string before = everything();
  const std::string folder = tweaks().string();
  for (const std::string& path :
       {folder, folder + "/", folder + "/.", folder + "/..", folder + "/a.b/..", folder + "/a.b/.",
        folder + "/a.b/inner", folder + "/near/inner", folder + "/link/d", folder + "/missing/x",
        folder + "/../x", folder + "/a.b/../../x", (root() / "var/mobile/other").string(),
        (outside() / "d").string(), root().string(), std::string("a.b"), std::string(),
        std::string("/"), "/" + tweaks("a.b").lexically_relative(root()).string()}) {
    EXPECT_EQ(status({"cleanup", path, "0"}), 1) << path;
    EXPECT_EQ(status({"cleanup", path, "1"}), 1) << path;
  }
  EXPECT_EQ(everything(), before);
}

TEST_F(CleanupTest, LeavesAnEmptyFolderOrNone) {
  write("keep", "x");
  writeOutside("keep");
  const auto fill = [&](const std::string& name) {
    writeTweak(name + "/TweakInfo.plist");
    writeTweak(name + "/x.bundle/Resources/closed/f");
    fs::create_directory_symlink(outside(), tweaks(name + "/link"));
    fs::permissions(tweaks(name + "/x.bundle/Resources/closed"), fs::perms(0555));
    ASSERT_EQ(::mkfifo(tweaks(name + "/pipe").c_str(), 0600), 0);
  };
  fill("a.b");
  fill("c d");
  const struct {
    std::string name, flag;
    bool isThere;
  } rows[] = {{"a.b", "1", true},      {"a.b", "1", true},     {"a.b", "0", false},
              {"a.b", "0", false},     {"a.b", "1", true},     {"c d/", "0", false},
              {"a.b/../x", "1", true}, {"\xC3\xA9", "1", true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name + " " + row.flag);
    EXPECT_EQ(status({"cleanup", tweaks(row.name).string(), row.flag}), 0);
    EXPECT_EQ(fs::is_directory(tweaks(row.name)), row.isThere);
    EXPECT_TRUE(!row.isThere || fs::is_empty(tweaks(row.name)));
  }
  EXPECT_EQ(contents(outside()), "keep 644 \"x\"\n");
  EXPECT_TRUE(fs::exists(root() / "keep"));
}

TEST_F(CleanupTest, TakesLinksAndFilesInTheFoldersPlaceForWhatTheyAre) {
  writeOutside("keep");
  for (const char* flag : {"0", "1"}) {
    fs::create_directory_symlink(outside(), tweaks("link"));
    writeTweak("file");
    for (const char* name : {"link", "file"}) {
      EXPECT_EQ(status({"cleanup", tweaks(name).string(), flag}), 0);
      EXPECT_EQ(fs::is_directory(fs::symlink_status(tweaks(name))), *flag == '1') << name;
      fs::remove(tweaks(name));
    }
  }
  EXPECT_TRUE(fs::exists(outside() / "keep"));
}

TEST_F(CleanupTest, FindsTheTweaksThroughLinksOfTheRootButNotOutside) {
  fs::rename(root() / "var", outside() / "var");
  EXPECT_EQ(status({"cleanup", tweaks("a").string(), "0"}), 0);
  EXPECT_FALSE(fs::exists(root() / "var"));
  EXPECT_EQ(status({"cleanup", tweaks("a").string(), "1"}), 0);  // makes what leads to it
  EXPECT_TRUE(fs::is_empty(tweaks("a")));

  fs::create_directory(root() / "private");
  fs::rename(root() / "var", root() / "private/var");
  fs::create_directory_symlink("private/var", root() / "var");
  writeTweak("a/f");
  EXPECT_EQ(status({"cleanup", tweaks("a").string(), "0"}), 0);
  EXPECT_FALSE(fs::exists(tweaks("a")));

  fs::remove(root() / "var");
  fs::create_directory_symlink(outside() / "var", root() / "var");
  writeTweak("a/f");
  EXPECT_EQ(status({"cleanup", tweaks("a").string(), "0"}), 1);
  EXPECT_EQ(status({"cleanup", tweaks("b").string(), "1"}), 1);
  EXPECT_TRUE(fs::exists(tweaks("a/f")));
  EXPECT_FALSE(fs::exists(tweaks("b")));
}

TEST_F(CleanupTest, IsBoundedInDepthAndMemory) {
  for (int i = 0; i < 1500; ++i) writeTweak("many/" + std::to_string(i));
  EXPECT_EQ(status({"cleanup", tweaks("many").string(), "1"}), 0);
  EXPECT_TRUE(fs::is_empty(tweaks("many")));
  for (const int depth : {127, 128}) {
    nest(tweaks("deep"), depth);
    EXPECT_EQ(status({"cleanup", tweaks("deep").string(), "0"}), depth == 127 ? 0 : 1);
  }
}

TEST_F(CleanupTest, IsNotLedOutsideByLinksThatAppearConcurrently) {
  writeOutside("d/keep");
  for (int i = 0; i < 30; ++i) {
    for (int file = 0; file < 20; ++file) writeTweak("a/d/" + std::to_string(file));
    fs::create_directory_symlink(outside() / "d", tweaks("link"));
    {
      const Swapper swapper(tweaks("a/d"), tweaks("link"));
      (void)run({"cleanup", tweaks("a").string(), "1"});  // may fail
    }
    ASSERT_TRUE(fs::exists(outside() / "d" / "keep"));
    fs::remove_all(tweaks("a"));
    fs::remove_all(tweaks("link"));
  }
}

}  // namespace
}  // namespace tavlen
