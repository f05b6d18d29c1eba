#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "tavlen/foundation/files/FileTree.h"
#include "tests/tools/HelperTest.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLogs = "var/mobile/Library/Logs/CrashReporter";

/// The helper as a user without rights calls it whose file has the mode 4755: in a mount namespace
/// of its own, with the device's tree for its "/". The user owns var/mobile and "user".
class LentRightsTest : public HelperTest {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "not tested: only root can install a setuid program";
    struct statvfs volume {};
    if (::statvfs(root().c_str(), &volume) != 0 || (volume.f_flag & ST_NOSUID) != 0) {
      GTEST_SKIP() << "not tested: the volume of " << root() << " permits no setuid programs";
    }
    copyItem(program_, root() / "kvfileops");
    fs::permissions(root() / "kvfileops", fs::perms(04755));
    program_ = "/kvfileops";
    for (const char* folder : {"usr", "lib", "lib64", "proc", "user/x.bundle", kLogs}) {
      fs::create_directories(root() / folder);
    }
    writeTweak("a.b/keep");
    give(root() / "user");
    give(root() / "var/mobile");
    prepare_ = [this] { return enterTree(); };
    if (run({}).status == kNotStarted) {
      GTEST_SKIP() << "not tested: the machine permits no mount namespace";
    }
    ASSERT_EQ(run({}).status, 2);
  }

  bool enterTree() const {
    ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // which only its caller could trace
    if (::unshare(CLONE_NEWNS) != 0) return false;
    if (::mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
    for (const std::string folder : {"usr", "lib", "lib64", "proc"}) {
      const std::string original = "/" + folder;
      if (!fs::exists(original)) continue;
      const std::string place = root() / folder;
      if (::mount(original.c_str(), place.c_str(), nullptr, MS_BIND, nullptr) != 0) return false;
    }
    return ::chroot(root().c_str()) == 0 && ::chdir("/") == 0;
  }

  static void give(const fs::path& path) {
    EXPECT_EQ(::lchown(path.c_str(), kNobody, kNobody), 0) << path;
    if (fs::is_directory(fs::symlink_status(path))) {
      for (const auto& entry : fs::directory_iterator(path)) give(entry.path());
    }
  }
  static uid_t owner(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_uid;
  }
  /// What the helper calls a path of the tree.
  std::string inside(const fs::path& path) const {
    return "/" + path.lexically_relative(root()).string();
  }
  Result call(const std::vector<std::string>& words) const { return run(words, User::nobody); }
  int copy(const fs::path& from, const fs::path& to) const {
    return call({"copy", inside(from), inside(to)}).status;
  }
  int fetch() const { return call({"fetch-logs", "com.x", "/user"}).status; }

  const fs::path source_ = root() / "user/x.bundle";
  const fs::path destination_ = tweaks("a.b/x.bundle");
};

TEST_F(LentRightsTest, FollowsOnlyLinksOfRootOnTheWay) {
  write(std::string(kLogs) + "/com.x-1.ips", "secret");
  fs::permissions(root() / kLogs / "com.x-1.ips", fs::perms(0600));
  write("user/x.bundle/f", "x");
  const std::string tweak = inside(tweaks("a.b"));
  const struct {
    std::vector<std::string> words;
    std::string way;
  } commands[] = {{{"cleanup", tweak, "0"}, tweak},
                  {{"cleanup", tweak, "1"}, tweak},
                  {{"cleanup", inside(tweaks("new")), "1"}, tweak},
                  {{"copy", "/user/x.bundle", inside(destination_)}, inside(destination_)},
                  {{"copy", "/user/x.bundle/f", inside(tweaks("f"))}, "/user/x.bundle/f"},
                  {{"fetch-logs", "com.x", "/user/x.bundle"}, std::string("/") + kLogs},
                  {{"fetch-logs", "com.x", "/user/x.bundle"}, "/user/x.bundle"}};
  const fs::path protectedFolder = root() / "protected";
  const auto expectRefusals = [&](const fs::path& link) {
    const std::string before = contents(root());
    int commandsThere = 0;
    for (const auto& command : commands) {
      if (!command.way.starts_with(inside(link))) continue;
      const Result result = call(command.words);
      EXPECT_EQ(result.status, 1) << testing::PrintToString(command.words);
      EXPECT_NE(result.err.find(inside(link) + ": is a link"), std::string::npos) << result.err;
      EXPECT_EQ(contents(root()), before) << testing::PrintToString(command.words);
      ++commandsThere;
    }
    EXPECT_GT(commandsThere, 0) << link;
  };
  std::vector<fs::path> places = {root() / kLogs, (root() / kLogs).parent_path(), source_};
  for (fs::path at = tweaks("a.b"); at != root() / "var/mobile"; at = at.parent_path()) {
    if (at != tweaks("a.b")) places.push_back(at);
  }
  for (const fs::path& place : places) {
    for (const bool isGiven : {true, false}) {
      fs::rename(place, protectedFolder);
      fs::create_directory_symlink("/protected", place);
      const fs::path folder = place.parent_path();
      if (isGiven) give(place);
      // A folder of root in one of the user's, who may exchange it.
      if (!isGiven && owner(folder.parent_path()) == kNobody) ::lchown(folder.c_str(), 0, 0);
      expectRefusals(place);
      ::lchown(folder.c_str(), kNobody, kNobody);
      fs::remove(place);
      fs::rename(protectedFolder, place);
    }
  }
  // The device's own link.
  fs::create_directory(root() / "private");
  fs::rename(root() / "var", root() / "private/var");
  fs::create_directory_symlink("private/var", root() / "var");
  fs::permissions(root(), fs::perms(0775));
  expectRefusals(root() / "var");
  fs::permissions(root(), fs::perms(0755));
  EXPECT_EQ(call({"cleanup", tweak, "1"}).status, 0);
  EXPECT_EQ(call({"cleanup", "/private" + tweak, "0"}).status, 0);
  EXPECT_FALSE(fs::exists(tweaks("a.b")));
  give(root() / "var");
  expectRefusals(root() / "var");
}

TEST_F(LentRightsTest, LinksThatAppearConcurrentlyLeadNowhere) {
  const fs::path protectedFolder = root() / "protected";
  write("protected/keep", "x");
  write("protected/a.b/keep", "x");
  write("user/x.bundle/f", "x");
  const std::string before = contents(protectedFolder);
  fs::create_directory_symlink("/protected", root() / "var/mobile/link");
  for (const fs::path& swapped : {tweaks(), tweaks().parent_path(), tweaks("a.b")}) {
    const Swapper swapper(swapped, root() / "var/mobile/link");
    for (int i = 0; i < 15; ++i) {
      (void)copy(source_, destination_);
      (void)call({"cleanup", inside(tweaks("a.b")), "1"});
      ASSERT_EQ(contents(protectedFolder), before) << swapped;
    }
  }
}

TEST_F(LentRightsTest, NeedsNothingOfItsCallersState) {
  write(std::string(kLogs) + "/com.x-1.ips", "log");
  write("user/x.bundle/large", std::string(300'000, 'x'));
  fs::remove_all(tweaks().parent_path());
  prepare_ = [this] {
    std::array<int, 2> pipe{};
    if (::pipe(pipe.data()) != 0) return false;
    ::dup2(pipe[1], STDERR_FILENO);
    ::close(pipe[0]);  // nothing reads the messages
    ::close(pipe[1]);
    for (const int resource : {RLIMIT_NOFILE, RLIMIT_FSIZE, RLIMIT_CPU}) {
      rlimit limit{};
      ::getrlimit(resource, &limit);
      limit.rlim_cur = 18;
      ::setrlimit(resource, &limit);
    }
    ::umask(0777);
    ::setenv("TAVLEN_ROOT", "/user", 1);
    return enterTree();
  };
  EXPECT_EQ(call({"cleanup", inside(tweaks("a.b")), "1"}).status, 0);
  for (const fs::path& path : {tweaks("a.b"), tweaks(), tweaks().parent_path()}) {
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0755)) << path;
    EXPECT_EQ(owner(path), path == tweaks().parent_path() ? 0 : kNobody) << path;
  }
  EXPECT_EQ(copy(source_, destination_), 0);
  EXPECT_EQ(contents(destination_), contents(source_));
  write(std::string(kLogs) + "/com.x-2.ips", "log");
  fs::create_hard_link(root() / kLogs / "com.x-2.ips", root() / kLogs / "com.x-3.ips");
  EXPECT_EQ(fetch(), 1);
  EXPECT_EQ(fs::status(root() / "user/com.x-1.ips").permissions(), fs::perms(0644));
}

TEST_F(LentRightsTest, CopiesBelongToTheCaller) {
  fs::create_directories(source_ / "inner");
  for (const std::string name : {"private", "inner/f"}) {
    write("user/x.bundle/" + name, "x");
    fs::permissions(source_ / name, fs::perms(0600));
  }
  fs::permissions(source_ / "inner", fs::perms(0500));
  give(source_);
  ASSERT_EQ(copy(source_, destination_), 0);
  ASSERT_EQ(copy(source_ / "private", tweaks("a.b/file")), 0);
  EXPECT_EQ(contents(destination_), contents(source_));
  for (const fs::path& path : {destination_ / "private", destination_ / "inner",
                               destination_ / "inner/f", destination_, tweaks("a.b/file")}) {
    EXPECT_EQ(owner(path), kNobody) << path;
  }
}

TEST_F(LentRightsTest, ReadsAndWritesForTheCallerOnlyWhatTheCallerMay) {
  write("user/x.bundle/secret", "x");
  fs::permissions(source_ / "secret", fs::perms(0600));
  const std::string before = contents(tweaks());
  EXPECT_EQ(copy(source_, destination_), 1);
  EXPECT_EQ(copy(source_ / "secret", tweaks("a.b/secret")), 1);
  EXPECT_EQ(contents(tweaks()), before);

  const fs::path log = root() / kLogs / "com.x-1.ips";
  write(std::string(kLogs) + "/com.x-1.ips", "log");
  fs::permissions(log, fs::perms(0600));
  fs::create_directory(root() / "closed");
  EXPECT_EQ(call({"fetch-logs", "com.x", "/closed"}).status, 1);
  EXPECT_TRUE(fs::is_empty(root() / "closed"));
  EXPECT_EQ(fetch(), 0);
  EXPECT_EQ(owner(root() / "user/com.x-1.ips"), kNobody);

  const fs::path secret = source_ / "secret";
  const fs::path second = root() / kLogs / "com.x-2.ips";
  fs::create_hard_link(secret, second);
  EXPECT_EQ(fetch(), 1);
  const Repetition linker([&] {
    (void)::unlink(second.c_str());
    (void)::link(secret.c_str(), second.c_str());
  });
  for (int i = 0; i < 100; ++i) (void)fetch();
  EXPECT_FALSE(fs::exists(root() / "user/com.x-2.ips"));
}

TEST_F(LentRightsTest, FoldersThatTakeTheCopysPlaceAreNotFilled) {
  write("user/x.bundle/f", "x");
  const fs::path other = tweaks("a.b/other");
  const fs::path taken = tweaks("a.b/taken");
  writeTweak("a.b/other/keep");
  fs::permissions(other, fs::perms(0711));
  const Swapper swapper(destination_, other);
  int copies = 0;
  for (int i = 0; i < 60; ++i) {
    if (copy(source_, destination_) == 0) ++copies;
    // Now only one of the two exists, and nothing is swapped.
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
