#include <sys/resource.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>

#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/files/TreeRemoval.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Threads.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

class FileTreeTest : public testing::Test {
 protected:
  FileTreeTest() {
    folder_.write("tree/a/b/file", std::string(300'000, 'x'));
    folder_.write("tree/.tavlen-1", "temporary");
    folder_.write("tree/a/program", "#!");
    fs::permissions(path("tree/a/program"), fs::perms::owner_all | fs::perms::group_exec);
    fs::permissions(path("tree/a/b"), fs::perms::owner_read | fs::perms::owner_exec);
    fs::create_symlink("nowhere", path("tree/link"));
    fs::create_directory(path("tree/empty"));
    folder_.write("file", "f");
    fs::create_directory(path("taken"));
    fs::create_symlink("nowhere", path("dangling"));
  }
  fs::path path(const char* name) const { return folder_.path() / name; }

  /// The error that moving or copying gives, by name.
  template <class Operation>
  int errorOf(const Operation& operation, const char* source, const fs::path& destination) const {
    const auto error = thrown<std::system_error>([&] { operation(path(source), destination); });
    return error ? error->code().value() : 0;
  }
  void expectTree(const char* root) const {
    const fs::path tree = path(root);
    EXPECT_EQ(readFile(tree / "a/b/file"), std::string(300'000, 'x'));
    EXPECT_EQ(fs::status(tree / "a/program").permissions(),
              fs::perms::owner_all | fs::perms::group_exec);
    EXPECT_EQ(fs::status(tree / "a/b").permissions(),
              fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(fs::read_symlink(tree / "link"), "nowhere");
    EXPECT_TRUE(fs::is_empty(tree / "empty"));
  }

  TemporaryFolder folder_{memoryFolder()};
};

TEST_F(FileTreeTest, CopiesAndMovesWholeTrees) {
  copyItem(path("tree"), path("copy"), isTemporaryName);
  expectTree("copy");
  EXPECT_FALSE(fs::exists(path("copy/.tavlen-1")));
  moveItem(path("copy"), path("moved"));
  expectTree("moved");
  EXPECT_FALSE(fs::exists(path("copy")));
  copyItem(path("tree/link"), path("link"));
  moveItem(path("link"), path("link2"));
  EXPECT_EQ(fs::read_symlink(path("link2")), "nowhere");
  for (const char* name : {"moved", "link2", "tree", "never there"}) removeItem(path(name));
  for (const char* name : {"moved", "tree"}) EXPECT_FALSE(fs::exists(path(name)));
}

TEST_F(FileTreeTest, NothingIsOverwrittenOrHalfMade) {
  const auto copy = [](const fs::path& from, const fs::path& to) { copyItem(from, to); };
  ASSERT_EQ(::mkfifo(path("tree/a/pipe").c_str(), 0600), 0);
  const struct {
    const char* source;
    const char* destination;
    int copyError;
    int moveError;
  } rows[] = {{"file", "taken", EEXIST, EEXIST},     {"tree", "taken", EEXIST, EEXIST},
              {"file", "dangling", EEXIST, EEXIST},  {"nowhere", "new", ENOENT, ENOENT},
              {"file", "no/folder", ENOENT, ENOENT}, {"tree", "tree/a/inner", EINVAL, EINVAL},
              {"tree/a/pipe", "new", EINVAL, 0}};
  for (const auto& row : rows) {
    EXPECT_EQ(errorOf(copy, row.source, path(row.destination)), row.copyError) << row.source;
    EXPECT_EQ(errorOf(moveItem, row.source, path(row.destination)), row.moveError) << row.source;
    if (row.moveError == 0) moveItem(path(row.destination), path(row.source));
  }
  EXPECT_EQ(errorOf(copy, "tree", path("half")), EINVAL) << "there is a pipe in it";
  EXPECT_FALSE(fs::exists(path("half")));
  EXPECT_TRUE(fs::is_empty(path("taken")));
  EXPECT_EQ(readFile(path("file")), "f");
}

TEST_F(FileTreeTest, MovesAcrossVolumes) {
  const fs::path memory = "/dev/shm";
  const fs::path elsewhere = memoryFolder() == memory ? fs::temp_directory_path() : memory;
  struct stat here {};
  struct stat there {};
  if (::stat(folder_.path().c_str(), &here) != 0 || ::stat(elsewhere.c_str(), &there) != 0 ||
      here.st_dev == there.st_dev) {
    GTEST_SKIP() << "there is no second volume";
  }
  const TemporaryDirectory other(elsewhere);
  moveItem(path("tree"), other.path() / "t");
  EXPECT_FALSE(fs::exists(path("tree")));
  EXPECT_EQ(errorOf(moveItem, "file", other.path() / "t"), EEXIST);
  moveItem(other.path() / "t", path("back"));
  expectTree("back");
  EXPECT_TRUE(fs::is_empty(other.path())) << "temporary items";
  EXPECT_FALSE(fs::exists(path(".TemporaryItems")));
}

TEST_F(FileTreeTest, DepthCostsNoStackAndNoDescriptors) {
  fs::path deep = path("deep");
  for (int level = 0; level < 1'500; ++level) {
    ASSERT_EQ(::mkdir(deep.c_str(), 0700), 0);
    deep = fs::path(deep.native() + "/d");
  }
  copyItem(path("deep"), path("dup"));
  // A phone gives a process no more than these.
  rlimit former{};
  ::getrlimit(RLIMIT_NOFILE, &former);
  const rlimit phone{256, former.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &phone);
  EXPECT_NO_THROW(removeItem(path("deep")));
  EXPECT_NO_THROW(removeItem(path("dup")));
  ::setrlimit(RLIMIT_NOFILE, &former);
  EXPECT_FALSE(fs::exists(path("deep")));
  EXPECT_FALSE(fs::exists(path("dup")));
}

TEST_F(FileTreeTest, RemovesTreesThatNoPathReachesAndClosedFolders) {
  FileDescriptor deepest(::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::string name(100, 'd');
  for (int level = 0; level < 300; ++level) {
    ASSERT_EQ(::mkdirat(deepest.get(), name.c_str(), 0700), 0);
    ASSERT_EQ(::mkdirat(deepest.get(), "closed", 0700), 0);
    ASSERT_EQ(::symlinkat("..", deepest.get(), "up"), 0);
    ASSERT_EQ(::mkdirat(deepest.get(), "closed/inner", 0700), 0);
    ASSERT_EQ(::fchmodat(deepest.get(), "closed", 0, 0), 0);
    FileDescriptor next(::openat(deepest.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const mode_t mode = level == 0 ? 0700 : level % 2 == 0 ? 0 : 0500;
    ASSERT_EQ(::fchmod(deepest.get(), mode), 0);
    deepest = std::move(next);
  }
  const fs::path tree = path(name.c_str());
  fs::permissions(tree, fs::perms::none);
  removeItem(tree);
  EXPECT_FALSE(fs::exists(fs::symlink_status(tree)));

  const fs::path top = fs::canonical(path("taken"));
  folder_.write("kept/file", "");
  fs::create_directory_symlink(path("kept"), top / "link");
  removeItem(top / "link/");
  EXPECT_FALSE(fs::is_symlink(top / "link"));
  EXPECT_TRUE(fs::exists(path("kept/file")));
  EXPECT_THROW(removeItem(path("kept/.")), std::system_error);
  EXPECT_TRUE(fs::exists(path("kept/file")));
}

TEST_F(FileTreeTest, RemovalFollowsNoLinkThatIsSwappedIn) {
  folder_.write("kept/file", "");
  folder_.write("kept/inner/file", "");
  fs::create_directory_symlink(path("kept"), path("link"));
  EXPECT_LT(openForRemoval(AT_FDCWD, path("link")).get(), 0);
  removeItem(path("link"));
  for (int round = 0; round < 20; ++round) {
    for (int sibling = 0; sibling < 20; ++sibling) {
      folder_.write("swapped/x/y/inner/file" + std::to_string(sibling), "");
    }
    fs::create_directory_symlink(path("kept"), path("link"));
    std::atomic<bool> hasBegun = false;
    std::atomic<bool> hasEnded = false;
    std::thread swapper([&] {
      const std::string inner = path("swapped/x/y");
      const std::string link = path("link");
      while (!hasEnded) {
        ::renameat2(AT_FDCWD, inner.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE);
        hasBegun = true;
      }
    });
    while (!hasBegun) std::this_thread::yield();
    try {
      removeItem(path("swapped"));
    } catch (const std::system_error&) {
      // What was moved away is no longer there to be removed.
    }
    hasEnded = true;
    swapper.join();
    for (const char* name : {"swapped", "link"}) removeItem(path(name));
    ASSERT_TRUE(fs::exists(path("kept/file")));
    ASSERT_TRUE(fs::exists(path("kept/inner/file")));
  }
}

TEST_F(FileTreeTest, LeftOversOfACrashAreSwept) {
  const fs::path items = folder_.path() / TemporaryDirectory::kItemsFolder;
  const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(25);
  folder_.write(".TemporaryItems/tavlen-old/closed/file", "x");
  folder_.write(".TemporaryItems/tavlen-new/file", "x");
  folder_.write(".TemporaryItems/another's/file", "x");
  fs::permissions(items / "tavlen-old/closed", fs::perms::none);
  fs::last_write_time(items / "tavlen-old", longAgo);
  fs::last_write_time(items / "another's", longAgo);
  fs::path released;
  {
    TemporaryDirectory kept(folder_.path());
    folder_.write((kept.path() / "file").lexically_relative(folder_.path()).string(), "x");
    released = kept.release();
  }
  EXPECT_FALSE(fs::exists(items / "tavlen-old"));
  EXPECT_TRUE(fs::exists(items / "tavlen-new/file"));
  EXPECT_TRUE(fs::exists(items / "another's/file"));
  EXPECT_TRUE(fs::exists(released / "file"));

  fs::create_directory(path("linked"));
  fs::create_directory_symlink(items, path("linked/.TemporaryItems"));
  fs::last_write_time(items / "tavlen-new", longAgo);
  EXPECT_THROW(TemporaryDirectory(path("linked")), std::system_error);
  EXPECT_TRUE(fs::exists(items / "tavlen-new/file"));
}

TEST(TemporaryDirectory, IsFreshPrivateAndGoneAtTheEnd) {
  const TemporaryFolder folder;
  std::optional<TemporaryDirectory> one(folder.path() / "new");
  const TemporaryDirectory two(folder.path() / "new");
  EXPECT_NE(one->path(), two.path());
  EXPECT_EQ(fs::status(two.path()).permissions(), fs::perms::owner_all);
  fs::create_directories(one->path() / "a/b");
  one.reset();
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path() / "new/.TemporaryItems"), {}), 1);
}

TEST(TemporaryDirectory, SeveralThreadsShareTheFolderAround) {
  const TemporaryFolder folder;
  inThreads(4, [&](int) {
    for (int i = 0; i < 500; ++i) EXPECT_NO_THROW(TemporaryDirectory(folder.path()));
  });
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

}  // namespace
}  // namespace tavlen
