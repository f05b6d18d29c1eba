#include "tavlen/foundation/files/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>
#include <vector>

#include "tests/support/TemporaryFolder.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

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
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 500; ++round) {
        EXPECT_NO_THROW(TemporaryDirectory(folder.path()));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(fs::is_empty(folder.path()));
}

}  // namespace
}  // namespace tavlen
