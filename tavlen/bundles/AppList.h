#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tavlen/device/AppListFetcher.h"

namespace tavlen {

class IPA;

/// The apps that tweaks can be made for, fetched once and kept.
///
/// Threads: any may ask; the first question fetches, under a lock.
class AppList {
 public:
  explicit AppList(std::unique_ptr<const AppListFetcher> appFetcher);
  AppList(const AppList&) = delete;
  AppList& operator=(const AppList&) = delete;
  ~AppList();

  /// The list of the process, made at the first call: over the system's application workspace when
  /// the device root is "/", over the folders of the tree below any other. It is not fetched again
  /// when either changes later.
  static AppList& shared();
  /// Makes shared() use `appFetcher`. To be called before the first use of shared(); later it is a
  /// programming error, which stops the process.
  static void setSharedFetcher(std::unique_ptr<const AppListFetcher> appFetcher);

  /// In the order of the fetcher; apps of one identifier are all there. The same objects every
  /// time.
  std::vector<std::shared_ptr<IPA>> apps();
  /// The first app of that identifier; null when there is none.
  std::shared_ptr<IPA> app(const std::string& bundleID);

 private:
  /// To be called with the lock held.
  void loadIfNeeded();

  std::unique_ptr<const AppListFetcher> appFetcher_;
  bool hasLoadedApps_ = false;
  std::vector<std::shared_ptr<IPA>> cachedAppsArray_;
  std::map<std::string, std::shared_ptr<IPA>, std::less<>> cachedAppsDict_;
  std::mutex appLoadLock_;
};

}  // namespace tavlen
