#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/device/AppListFetcher.h"

namespace tavlen {

class IPA;

/// The apps that tweaks can be made for, fetched once and cached.
///
/// Threads: any. The first call fetches, under a lock.
class AppList {
 public:
  /// A list of the apps of `appFetcher`, which is asked once.
  explicit AppList(std::unique_ptr<const AppListFetcher> appFetcher);
  AppList(const AppList&) = delete;
  AppList& operator=(const AppList&) = delete;
  ~AppList();

  /// The list of the process, created by the first call. It uses the system's application workspace
  /// when the device root is "/", and the folders of the tree below any other root. Later changes
  /// of root and apps are not seen.
  static AppList& shared();
  /// Makes shared() use `appFetcher`. Call before the first use of shared(); a later call aborts
  /// the process.
  static void setSharedFetcher(std::unique_ptr<const AppListFetcher> appFetcher);

  /// The apps in the fetcher's order, including several with the same identifier. Every call
  /// returns the same objects. The fetcher's exceptions propagate.
  std::vector<std::shared_ptr<IPA>> apps();
  /// The first app with that identifier; null without a match.
  std::shared_ptr<IPA> app(const std::string& bundleID);
  /// The identifiers of all apps, each once, sorted. Valid as long as the list.
  std::vector<std::string_view> identifiers();

 private:
  /// The lock must be held.
  void loadIfNeeded();

  std::unique_ptr<const AppListFetcher> appFetcher_;
  bool hasLoadedApps_ = false;
  std::vector<std::shared_ptr<IPA>> cachedAppsArray_;
  std::map<std::string, std::shared_ptr<IPA>, std::less<>> cachedAppsDict_;
  std::mutex appLoadLock_;
};

}  // namespace tavlen
