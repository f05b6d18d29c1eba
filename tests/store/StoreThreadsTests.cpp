#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tavlen/items/TweakPoster.h"
#include "tavlen/store/TweakManager.h"
#include "tests/support/StoreTest.h"

namespace tavlen {
namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 12;

class StoreThreadsTest : public testing::Test {
 protected:
  StoreThreadsTest() { DeviceRoot::setShared(DeviceRoot(root_.path())); }
  ~StoreThreadsTest() override { DeviceRoot::setShared(DeviceRoot()); }

  static void addOne(TweakFile::Manifest& manifest) {
    manifest.configuration.bundleID += "+";
    manifest._hooks.emplace_back();
  }
  /// Imports a collection of two members, under names that only this call uses.
  std::string import(int thread, int round) const {
    const std::string name = "in" + std::to_string(thread) + "-" + std::to_string(round);
    constexpr const char* kConfiguration =
        R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b"},)";
    root_.write(name + "/Manifest.json", std::string(kConfiguration) + R"("tweaks":["A","B"]})");
    for (const char* member : {"A", "B"}) {
      root_.write(name + "/Tweaks/" + member + "/Manifest.json",
                  std::string(kConfiguration) + R"("overrides":[],"hooks":[]})");
    }
    return TweakCollection::handlePayloadAt(root_.path() / name)->id();
  }

  const TemporaryFolder root_{memoryFolder()};
};

// One edit under the poster's lock, one under the tweak's own, a creation, a deletion, an import,
// an icon and a listing a round; every thread has a handle of its own on the first tweak.
TEST_F(StoreThreadsTest, NoEditUnderALockIsLost) {
  const auto create = [] {
    return TweakFile::create("shared", TweakColor::darkRed, TweakGlyph::default_(), "");
  };
  const auto byPoster = create();
  const auto byOwnLock = create();
  std::atomic<int> manifestDiffs = 0;
  const auto token = NotificationCenter::default_().addObserver(
      std::string(kTweaksDidUpdateNotification), nullptr, [&](const Notification& notification) {
        const auto& diffs = std::any_cast<const TweakDiffs&>(notification.userInfo->at("diffs"));
        if (nameOf(*diffs.at(0)) == "updateManifest") ++manifestDiffs;
      });
  std::atomic<std::size_t> resolvedMembers = 0;
  const auto work = [&](int thread) {
    const auto handle = TweakFile::at(byPoster->url());
    for (int round = 0; round < kRounds; ++round) {
      tweakPoster().performWithoutNotifications([&] { handle->updateManifest(addOne); });
      {
        const std::lock_guard lock(byOwnLock->recursiveLock);
        byOwnLock->updateManifest(addOne);
      }
      handle->setCustomIcon(Image(1, 1, {0, 0, 0, 255}));
      const auto brief = create();
      EXPECT_EQ(brief->manifest().configuration.name, "shared");
      const auto collection = TweakManager::tweakWithID(import(thread, round));
      resolvedMembers +=
          dynamic_cast<const TweakCollection&>(*collection).manifest().tweaks().size();
      EXPECT_GE(TweakManager::allTweaks().size(), 3U);
      brief->remove();
      if (round % 2 == 0) collection->remove();
    }
  };
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) threads.emplace_back(work, thread);
  for (std::thread& thread : threads) thread.join();
  NotificationCenter::default_().removeObserver(token);

  constexpr std::size_t kEdits = std::size_t{kThreads} * kRounds;
  for (const auto& tweak : {byPoster, byOwnLock}) {
    EXPECT_EQ(tweak->manifest()._hooks.size(), kEdits);
    EXPECT_EQ(tweak->manifest().configuration.bundleID, std::string(kEdits, '+'));
  }
  EXPECT_EQ(resolvedMembers, 2 * kEdits);
  EXPECT_LE(manifestDiffs, static_cast<int>(kEdits)) << "what was silenced was posted";
  EXPECT_EQ(TweakManager::allTweaks().size(), 2 + 2 * kEdits + kEdits / 2);
}

}  // namespace
}  // namespace tavlen
