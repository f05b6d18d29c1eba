#include <sys/stat.h>
#include <unistd.h>

#include <exception>

#include "kvfileops/Cleanup.h"
#include "kvfileops/Copy.h"
#include "kvfileops/FetchLogs.h"
#include "tavlen/device/DeviceRoot.h"
#include "tests/tools/HelperTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

/// The jobs of a helper that has more rights than its caller.
class LentRightsTest : public HelperTest {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can lend rights";
    fs::create_directories(tweaks("a.b"));
    fs::create_directory(outside() / "x.bundle");
    give(tweaks("a.b"));
    give(outside());
  }

  static void give(const fs::path& path) {
    ASSERT_EQ(::lchown(path.c_str(), kNobody, kNobody), 0) << path;
  }
  static uid_t owner(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_uid;
  }
  bool copy(const fs::path& from, const fs::path& to) const {
    return runWithLentRights([&] { fileops::copy(device(), from, to); });
  }
  DeviceRoot device() const { return DeviceRoot(root()); }

  const fs::path source_ = outside() / "x.bundle";
  const fs::path destination_ = tweaks("a.b/x.bundle");
};

TEST_F(LentRightsTest, CopiesBelongToTheCaller) {
  fs::create_directories(source_ / "inner");
  for (const std::string name : {"private", "inner/f"}) {
    writeOutside("x.bundle/" + name);
    fs::permissions(source_ / name, fs::perms(0600));
    give(source_ / name);
  }
  fs::permissions(source_ / "inner", fs::perms(0500));
  give(source_ / "inner");
  ASSERT_TRUE(copy(source_, destination_));
  ASSERT_TRUE(copy(source_ / "private", tweaks("a.b/file")));
  EXPECT_EQ(contents(destination_), contents(source_));
  for (const fs::path& path : {destination_ / "private", destination_ / "inner",
                               destination_ / "inner/f", destination_, tweaks("a.b/file")}) {
    EXPECT_EQ(owner(path), kNobody) << path;
  }
}

TEST_F(LentRightsTest, ReadsAndWritesForTheCallerOnlyWhatTheCallerMay) {
  writeOutside("x.bundle/secret");
  fs::permissions(source_ / "secret", fs::perms(0600));
  EXPECT_FALSE(copy(source_, destination_));
  EXPECT_FALSE(copy(source_ / "secret", tweaks("a.b/secret")));
  EXPECT_TRUE(fs::is_empty(tweaks("a.b")));

  const std::string log = "var/mobile/Library/Logs/CrashReporter/com.x-1.ips";
  write(log, "log");
  fs::permissions(root() / log, fs::perms(0600));
  const auto fetch = [&](const fs::path& folder) {
    return runWithLentRights([&] {
      if (!fileops::fetchLogs(device(), "com.x", folder)) throw std::exception();
    });
  };
  EXPECT_FALSE(fetch(source_));
  EXPECT_FALSE(fs::exists(source_ / "com.x-1.ips"));
  EXPECT_TRUE(fetch(outside()));
  EXPECT_EQ(owner(outside() / "com.x-1.ips"), kNobody);
}

TEST_F(LentRightsTest, OnlyTheFoldersOfTweaksAreGivenAway) {
  fs::remove_all(root() / "var");
  ASSERT_TRUE(runWithLentRights(
      [&] { fileops::cleanUp(device(), tweaks("a.b"), fileops::AfterCleanup::emptyFolder); }));
  EXPECT_EQ(owner(tweaks("a.b")), kNobody);
  EXPECT_EQ(owner(tweaks()), kNobody);
  for (fs::path path = tweaks().parent_path(); path != root(); path = path.parent_path()) {
    EXPECT_EQ(owner(path), 0U) << path;
  }
}

TEST_F(LentRightsTest, FoldersThatTakeTheCopysPlaceAreNotFilled) {
  writeOutside("x.bundle/f");
  const fs::path other = tweaks("a.b/other");
  const fs::path taken = tweaks("a.b/taken");
  writeTweak("a.b/other/keep");
  fs::permissions(other, fs::perms(0711));
  const Swapper swapper(destination_, other);
  int copies = 0;
  for (int i = 0; i < 200; ++i) {
    if (copy(source_, destination_)) ++copies;
    // Now only one of the two is there, and nothing is swapped.
    fs::rename(destination_, taken);
    if (fs::exists(taken / "keep")) {
      fs::remove_all(other);
      fs::rename(taken, other);
    }
    fs::remove_all(taken);
    ASSERT_EQ(contents(other), "keep 644 \"x\"\n") << i;
    ASSERT_EQ(owner(other), 0U) << i;
    ASSERT_EQ(fs::status(other).permissions(), fs::perms(0711)) << i;
  }
  EXPECT_GT(copies, 0);
}

}  // namespace
}  // namespace tavlen
