#include "tavlen/bundles/AppList.h"

#include <filesystem>
#include <optional>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/DirectoryAppListFetcher.h"
#include "tavlen/device/LSAppListFetcher.h"
#include "tavlen/foundation/base/FatalError.h"
#include "tavlen/foundation/tasks/NotificationCenter.h"

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

void AppList::load() {
  std::map<std::filesystem::path, std::shared_ptr<IPA>> former;
  for (const std::shared_ptr<IPA>& app : cachedAppsArray_) former.try_emplace(app->appDir(), app);
  // Collect the apps in a local list: the host's fetcher may throw, and the next call must then
  // fetch again.
  std::vector<std::shared_ptr<IPA>> apps;
  std::map<std::string, std::shared_ptr<IPA>, std::less<>> appsByID;
  for (AppListApp& app : appFetcher_->fetchAllApps()) {
    std::shared_ptr<IPA> handle = IPA::withAppDir(std::move(app.bundle));
    if (const auto known = former.find(handle->appDir()); known != former.end())
      handle = known->second;
    apps.push_back(std::move(handle));
    appsByID.try_emplace(std::move(app.bundleID), apps.back());
  }
  cachedAppsArray_ = std::move(apps);
  cachedAppsDict_ = std::move(appsByID);
  hasLoadedApps_ = true;
}

void AppList::loadIfNeeded() {
  if (!hasLoadedApps_) load();
}

void AppList::reload() {
  std::vector<std::shared_ptr<IPA>> apps;
  {
    const std::lock_guard lock(appLoadLock_);
    load();
    apps = cachedAppsArray_;
  }
  // Any app may have been updated in its folder. Without the lock, because a search of a large
  // bundle, which this waits for, must not keep others from the list.
  for (const std::shared_ptr<IPA>& app : apps) app->forgetExecutables();
  NotificationCenter::default_().post({std::string(kDidReloadNotification), this, std::nullopt});
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

std::vector<std::string> AppList::identifiers() {
  const std::lock_guard lock(appLoadLock_);
  loadIfNeeded();
  std::vector<std::string> identifiers;
  identifiers.reserve(cachedAppsDict_.size());
  for (const auto& [identifier, app] : cachedAppsDict_) identifiers.push_back(identifier);
  return identifiers;
}

}  // namespace tavlen
