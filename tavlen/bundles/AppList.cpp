#include "tavlen/bundles/AppList.h"

#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/DirectoryAppListFetcher.h"
#include "tavlen/device/LSAppListFetcher.h"
#include "tavlen/foundation/base/FatalError.h"

namespace tavlen {

namespace {

/// The fetcher for shared(), until its first use.
struct SharedFetcher {
  std::mutex lock;
  std::unique_ptr<const AppListFetcher> fetcher;
  bool isTaken = false;
};

SharedFetcher& sharedFetcher() {
  static SharedFetcher shared;
  return shared;
}

std::unique_ptr<const AppListFetcher> takeSharedFetcher() {
  SharedFetcher& shared = sharedFetcher();
  const std::lock_guard lock(shared.lock);
  shared.isTaken = true;
  if (shared.fetcher) return std::move(shared.fetcher);
  const DeviceRoot root = DeviceRoot::shared();
  if (root.isDevice()) return std::make_unique<LSAppListFetcher>();
  return std::make_unique<DirectoryAppListFetcher>(root);
}

}  // namespace

AppList::AppList(std::unique_ptr<const AppListFetcher> appFetcher)
    : appFetcher_(std::move(appFetcher)) {}

AppList::~AppList() = default;

AppList& AppList::shared() {
  static AppList list(takeSharedFetcher());
  return list;
}

void AppList::setSharedFetcher(std::unique_ptr<const AppListFetcher> appFetcher) {
  SharedFetcher& shared = sharedFetcher();
  const std::lock_guard lock(shared.lock);
  if (shared.isTaken) fatalError("AppList: the shared list is already in use");
  shared.fetcher = std::move(appFetcher);
}

void AppList::loadIfNeeded() {
  if (hasLoadedApps_) return;
  // Collect the apps in a local list: the host's fetcher may throw, and the next call must then
  // fetch again.
  std::vector<std::shared_ptr<IPA>> apps;
  std::map<std::string, std::shared_ptr<IPA>, std::less<>> appsByID;
  for (AppListApp& app : appFetcher_->fetchAllApps()) {
    apps.push_back(IPA::withAppDir(std::move(app.bundle)));
    appsByID.try_emplace(std::move(app.bundleID), apps.back());
  }
  cachedAppsArray_ = std::move(apps);
  cachedAppsDict_ = std::move(appsByID);
  hasLoadedApps_ = true;
}

std::vector<std::shared_ptr<IPA>> AppList::apps() {
  const std::lock_guard lock(appLoadLock_);
  loadIfNeeded();
  return cachedAppsArray_;
}

std::shared_ptr<IPA> AppList::app(const std::string& bundleID) {
  const std::lock_guard lock(appLoadLock_);
  loadIfNeeded();
  const auto found = cachedAppsDict_.find(bundleID);
  return found == cachedAppsDict_.end() ? nullptr : found->second;
}

std::vector<std::string_view> AppList::identifiers() {
  const std::lock_guard lock(appLoadLock_);
  loadIfNeeded();
  std::vector<std::string_view> identifiers;
  identifiers.reserve(cachedAppsDict_.size());
  for (const auto& [identifier, app] : cachedAppsDict_) identifiers.push_back(identifier);
  return identifiers;
}

}  // namespace tavlen
