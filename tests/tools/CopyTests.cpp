#include <sys/stat.h>
#include <unistd.h>

#include "tests/tools/HelperTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

class CopyTest : public HelperTest {
 protected:
  CopyTest() { fs::create_directory(tweaks("a.b")); }

  std::string source() const { return (outside() / "x.bundle").string(); }
  std::string destination() const { return tweaks("a.b/x.bundle").string(); }
  void writeSource(const std::string& name, int mode = 0644) const {
    writeOutside("x.bundle/" + name, name);
    fs::permissions(outside() / "x.bundle" / name, fs::perms(mode));
  }
};

TEST_F(CopyTest, KeepsContentsAndPermissions) {
  writeSource("code.js");
  writeSource("Executables/run", 0755);
  writeSource("Resources/large", 0600);
  writeOutside("x.bundle/Resources/large", std::string(300'000, 'y'));
  fs::create_directory(outside() / "x.bundle/empty");
  fs::permissions(outside() / "x.bundle/Resources", fs::perms(0555));
  EXPECT_EQ(status({"copy", source(), destination()}), 0);
  EXPECT_EQ(contents(destination()), contents(source()));
  EXPECT_EQ(fs::file_size(destination() + "/Resources/large"), 300'000U);
  fs::permissions(outside() / "x.bundle/Resources", fs::perms(0755));

  writeSource("run", 06755);
  const std::string file = tweaks("run").string();
  EXPECT_EQ(status({"copy", source() + "/run", file}), 0);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0755)) << "rights were lent";
}

TEST_F(CopyTest, LeavesNothingOfWhatFails) {
  writeSource("a");
  writeTweak("there");
  const fs::path inside = outside() / "x.bundle";
  const struct {
    std::string name;
    void (*make)(const fs::path& folder);
  } rows[] = {
      {"a link to a file", [](const fs::path& f) { fs::create_symlink("a", f / "z"); }},
      {"a link to a folder",
       [](const fs::path& f) { fs::create_directory_symlink("/etc", f / "z"); }},
      {"a link to nothing", [](const fs::path& f) { fs::create_symlink("b", f / "z"); }},
      {"a pipe", [](const fs::path& f) { ASSERT_EQ(::mkfifo((f / "z").c_str(), 0600), 0); }},
      {"too deep", [](const fs::path& f) { nest(f, 63); }}};  // the per-app folder is one more
  const std::string before = contents(root());
  for (const auto& row : rows) {
    row.make(inside);
    EXPECT_EQ(status({"copy", source(), destination()}), 1) << row.name;
    EXPECT_EQ(contents(root()), before) << row.name;
    fs::remove_all(inside / "z");
  }
  EXPECT_EQ(status({"copy", source(), destination()}), 0);
}

TEST_F(CopyTest, LeavesNothingWhereAResourceIsUsedUp) {
  writeOutside("x.bundle/d/e/document", std::string(300'000, 'y'));
  const auto copied = [&](const std::string& from) {
    const int status = run({"copy", source() + from, destination()}).status;
    EXPECT_TRUE(status == 0 || fs::is_empty(tweaks("a.b"))) << from << ": " << status << "\n"
                                                            << contents(tweaks());
    return status == 0;
  };
  for (const std::string from : {"", "/d/e/document"}) {
    const FileSizeLimit limit(100'000);
    EXPECT_FALSE(copied(from));
  }
  rlim_t descriptors = 4;
  prepare_ = [&] {
    ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // which needs descriptors, too
    const rlimit limit{descriptors, descriptors};
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
  };
  while (descriptors < 100 && !copied("")) ++descriptors;
  EXPECT_GT(descriptors, 10U);
  EXPECT_EQ(contents(destination()), contents(source()));
}

TEST_F(CopyTest, MakesNothingThatCleanupLeaves) {
  nest(source(), 62);
  EXPECT_EQ(status({"copy", source(), destination()}), 0);
  EXPECT_EQ(status({"cleanup", tweaks("a.b").string(), "0"}), 0);
  EXPECT_FALSE(fs::exists(tweaks("a.b")));
  // Where the destination lies counts, too.
  const fs::path deepest = nest(tweaks("a.b"), 60);
  EXPECT_EQ(status({"copy", source(), (deepest / "x").string()}), 1);
  EXPECT_TRUE(fs::is_empty(deepest));
}

TEST_F(CopyTest, RefusesOtherPlacesAndWhatIsThere) {
  writeSource("a");
  writeTweak("there/f", "old");
  fs::create_directory_symlink(outside(), tweaks("link"));
  fs::create_symlink("nothing", tweaks("dangling"));
  fs::create_symlink("x.bundle", outside() / "sourceLink");
  const std::string folder = tweaks().string();
  const std::string outer = outside().string();
  std::vector<std::pair<std::string, std::string>> rows = {
      {source() + "/a", folder + "/there/f"},
      {source() + "/a", folder + "/dangling"},
      {folder + "/there", folder + "/there/x"}};
  for (const std::string& to :
       {folder, folder + "/there", folder + "/there/f", folder + "/link", folder + "/link/x",
        folder + "/missing/x", folder + "/there/..", folder + "/../x", outer + "/y",
        std::string("/x.bundle"), std::string("x"), std::string()}) {
    rows.emplace_back(source(), to);
  }
  for (const std::string& from :
       {std::string("x.bundle"), std::string(), outer + "/missing", outer + "/sourceLink",
        outer + "/sourceLink/", std::string("/dev/zero"), folder}) {
    rows.emplace_back(from, folder + "/x");
  }
  const std::string before = everything();
  for (const auto& [from, to] : rows) {
    EXPECT_EQ(status({"copy", from, to}), 1) << from << " to " << to;
    EXPECT_EQ(everything(), before) << from << " to " << to;
  }
}

TEST_F(CopyTest, CopiesNothingThatALinkInTheSourcesPlaceLeadsTo) {
  writeSource("d/a");
  writeOutside("secret/key");
  fs::create_directory_symlink(outside() / "secret", outside() / "link");
  int copies = 0;
  for (const std::string swapped : {"x.bundle", "x.bundle/d"}) {
    const Swapper swapper(outside() / swapped, outside() / "link");
    for (int i = 0; i < 30; ++i) {
      const std::string place = destination() + std::to_string(i);
      if (run({"copy", source(), place}).status == 0) {
        ++copies;
        ASSERT_EQ(contents(place), "d 755/\nd/a 644 \"d/a\"\n") << swapped;
      }
      ASSERT_FALSE(fs::exists(place + "/key") || fs::exists(place + "/d/key")) << swapped;
      fs::remove_all(place);
    }
  }
  EXPECT_GT(copies, 0);
}

TEST_F(CopyTest, FailsWithoutPermission) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs another user than the folders' owner";
  writeSource("a");
  EXPECT_EQ(status({"copy", source(), destination()}, User::nobody), 1);
  fs::permissions(tweaks("a.b"), fs::perms(0777));
  writeSource("secret", 0600);
  EXPECT_EQ(status({"copy", source(), destination()}, User::nobody), 1);
  EXPECT_TRUE(fs::is_empty(tweaks("a.b")));
  fs::remove(outside() / "x.bundle/secret");
  writeSource("closed/f");
  fs::permissions(outside() / "x.bundle/closed", fs::perms(0555));
  EXPECT_EQ(status({"copy", source(), destination()}, User::nobody), 0);
  // "closed" cannot be written to; these can be read or entered no more, either.
  for (const int mode : {0000, 0300, 0400}) {
    const std::string name = "a.b/closed" + std::to_string(mode);
    writeTweak(name + "/f");
    fs::permissions(tweaks(name), fs::perms(mode));
    ASSERT_EQ(::chown(tweaks(name).c_str(), kNobody, kNobody), 0);
  }
  EXPECT_EQ(status({"cleanup", tweaks("a.b").string(), "1"}, User::nobody), 0);
  EXPECT_TRUE(fs::is_empty(tweaks("a.b")));
  // What is root's.
  writeTweak("a/f");
  const std::string before = contents(tweaks());
  for (const char* name : {"a", "b"}) {
    EXPECT_EQ(status({"cleanup", tweaks(name).string(), "1"}, User::nobody), 1) << name;
  }
  EXPECT_EQ(contents(tweaks()), before);
}

}  // namespace
}  // namespace tavlen
