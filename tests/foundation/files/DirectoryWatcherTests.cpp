#include "tavlen/foundation/files/DirectoryWatcher.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include "tests/support/TemporaryFolder.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;
using Wake = DirectoryWatcher::Wake;

/// A watcher of the folder and of "sub" in it, whose wait ends once nothing is left to wake it.
class DirectoryWatcherTest : public testing::Test {
 protected:
  DirectoryWatcherTest() {
    folder_.write("sub/file", "old");
    folder_.write("deep/er/file", "old");
    watcher_.watch({folder_.path(), folder_.path() / "sub", folder_.path() / "nowhere"});
  }

  /// Whether what `happens` wakes it within that time.
  bool wakes(const std::function<void()>& happens, std::chrono::milliseconds atMost) {
    std::array<int, 2> pipe{};
    EXPECT_EQ(::pipe(pipe.data()), 0);
    happens();
    const std::array<int, 1> ends = {pipe[0]};
    std::atomic<bool> isAwake = false;
    std::thread closing([&] {
      const auto last = std::chrono::steady_clock::now() + atMost;
      while (!isAwake && std::chrono::steady_clock::now() < last) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      }
      ::close(pipe[1]);
    });
    const Wake wake = watcher_.wait(ends);
    isAwake = true;
    closing.join();
    ::close(pipe[0]);
    return wake == Wake::change;
  }

  TemporaryFolder folder_;
  DirectoryWatcher watcher_;
};

TEST_F(DirectoryWatcherTest, WakesForWhatHappensInItsFolders) {
  const fs::path folder = folder_.path();
  const std::pair<const char*, std::function<void()>> changes[] = {
      {"a new file", [&] { folder_.write("new", ""); }},
      {"one in the other folder", [&] { folder_.write("sub/new", ""); }},
      {"new contents", [&] { folder_.write("sub/file", "new"); }},
      {"a file in a file's place", [&] { fs::rename(folder / "new", folder / "sub/file"); }},
      {"a file's end", [&] { fs::remove(folder / "sub/new"); }},
      {"many",
       [&] {
         for (int i = 0; i < 20'000; ++i) {
           folder_.write("sub/file" + std::to_string(i % 2), "");
         }
       }},
      {"a folder's end", [&] { fs::remove_all(folder / "sub"); }}};
  for (const auto& [name, change] : changes)
    EXPECT_TRUE(wakes(change, std::chrono::seconds(15))) << name;
}

TEST_F(DirectoryWatcherTest, SleepsOverEverythingElse) {
  const fs::path folder = folder_.path();
  const std::pair<const char*, std::function<void()>> changes[] = {
      {"nothing", [] {}},
      {"a temporary name", [&] { folder_.write("sub/.new", ""); }},
      {"its end", [&] { fs::remove(folder / "sub/.new"); }},
      {"something deeper", [&] { folder_.write("deep/er/file", "new"); }},
      {"what is watched no more", [&] {
         watcher_.watch({folder});
         folder_.write("sub/file", "new");
       }}};
  for (const auto& [name, change] : changes)
    EXPECT_FALSE(wakes(change, std::chrono::milliseconds(200))) << name;
}

}  // namespace
}  // namespace tavlen
