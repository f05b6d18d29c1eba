#include "tavlen/bundles/AppList.h"

#include <atomic>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/LSAppListFetcher.h"
#include "tests/support/StandIns.h"
#include "tests/support/Threads.h"

namespace tavlen {
namespace {

/// Apps com.0 to com.2 and com.0 again; throws the first `failures` times.
class CountingFetcher final : public AppListFetcher {
 public:
  explicit CountingFetcher(std::atomic<int>& fetches, int failures = 0)
      : fetches_(fetches), failures_(failures) {}
  std::vector<AppListApp> fetchAllApps() const override {
    if (fetches_++ < failures_) throw std::runtime_error("no apps today");
    return {{"com.0", "", "/a"}, {"com.1", "", "/b"}, {"com.2", "", "/c"}, {"com.0", "", "/d"}};
  }

 private:
  std::atomic<int>& fetches_;
  int failures_;
};

TEST(AppList, FetchesOnceAndAnswersTheSameObjects) {
  std::atomic<int> fetches = 0;
  AppList list(std::make_unique<CountingFetcher>(fetches));
  EXPECT_EQ(fetches, 0);
  EXPECT_EQ(list.app("com.9"), nullptr);
  const auto apps = list.apps();
  ASSERT_EQ(apps.size(), 4U);
  EXPECT_EQ(apps[3]->appDir(), "/d");
  EXPECT_EQ(list.app("com.0"), apps[0]);
  EXPECT_EQ(list.app("com.2"), apps[2]);
  EXPECT_EQ(list.apps(), apps);
  EXPECT_EQ(fetches, 1);
}

TEST(AppList, AsksAgainAfterAFetchThatThrew) {
  std::atomic<int> fetches = 0;
  AppList list(std::make_unique<CountingFetcher>(fetches, 1));
  EXPECT_THROW(list.apps(), std::runtime_error);
  EXPECT_EQ(list.apps().size(), 4U);
}

TEST(AppList, IsLoadedOnceByManyThreads) {
  std::string records;
  for (int i = 0; i < 20; ++i) {
    const std::string name = std::to_string(i);
    records += "<dict><key>bundleIdentifier</key><string>com." + name +
               "</string><key>bundleURL</key><string>/A/" + name + ".app</string></dict>";
  }
  const StandIns standIns("<key>applications</key><array>" + records + "</array>");
  std::atomic<int> fetches = 0;
  AppList system(std::make_unique<LSAppListFetcher>());
  AppList counted(std::make_unique<CountingFetcher>(fetches));
  std::array<std::shared_ptr<IPA>, 8> found;
  inThreads(8, [&](int i) {
    EXPECT_EQ(counted.apps().size(), 4U);
    EXPECT_EQ(LSAppListFetcher().fetchAllApps().size(), 20U);
    found.at(static_cast<std::size_t>(i)) = i % 2 == 0 ? system.app("com.7") : system.apps().at(7);
  });
  EXPECT_EQ(fetches, 1);
  for (const auto& app : found) EXPECT_EQ(app, found[0]);
  EXPECT_EQ(found[0]->appDir(), "/A/7.app");
}

/// Whether the shared list, made now, holds just the app in `appDir`.
bool sharedListHolds(const std::filesystem::path& appDir) {
  const auto apps = AppList::shared().apps();
  return apps.size() == 1 && apps[0]->appDir() == appDir;
}

bool sharedListIsOfTheSystem() {
  const StandIns standIns(
      "<key>applications</key><array><dict><key>bundleIdentifier</key><string>com.s</string>"
      "<key>bundleURL</key><string>/A/S.app</string></dict></array>");
  return sharedListHolds("/A/S.app");
}

bool sharedListIsOfTheTree() {
  const TemporaryFolder tree;
  tree.write("Applications/T.app/Info.plist",
             "<plist><dict><key>CFBundleIdentifier</key><string>com.t</string></dict></plist>");
  DeviceRoot::setShared(DeviceRoot(tree.path()));
  return sharedListHolds(tree.path() / "Applications/T.app");
}

bool sharedListIsOfTheHost() {
  static std::atomic<int> fetches = 0;
  AppList::setSharedFetcher(std::make_unique<CountingFetcher>(fetches));
  return AppList::shared().apps().size() == 4 && IPA::all() == AppList::shared().apps() &&
         fetches == 1;
}

void setSharedFetcherTooLate() {
  AppList::shared();
  AppList::setSharedFetcher(nullptr);
}

// The shared list is made once a process, so each question has a process of its own.
TEST(AppListDeathTest, SharedListChoosesItsFetcher) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const testing::ExitedWithCode good(0);
  EXPECT_EXIT(std::exit(sharedListIsOfTheSystem() ? 0 : 1), good, "");
  EXPECT_EXIT(std::exit(sharedListIsOfTheTree() ? 0 : 1), good, "");
  EXPECT_EXIT(std::exit(sharedListIsOfTheHost() ? 0 : 1), good, "");
  EXPECT_DEATH(setSharedFetcherTooLate(), "already in use");
}

}  // namespace
}  // namespace tavlen
