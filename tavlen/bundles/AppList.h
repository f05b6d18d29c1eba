#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/device/AppListFetcher.h"
#include "tavlen/foundation/base/API.h"

namespace tavlen {

class IPA;

/// The apps that tweaks can be made for, fetched once and cached until reload().
///
/// Threads: any. The first call fetches, and so does reload(); the other calls wait for that. With
/// many apps it takes as long as reading their Info.plist files, and cannot be cancelled.
class TAVLEN_API AppList {
 public:
  /// Posted to NotificationCenter::default_() when a list has been reloaded; its object is the
  /// list.
  static constexpr std::string_view kDidReloadNotification = "AppListDidReload";

  /// A list of the apps of `appFetcher`.
  explicit AppList(std::unique_ptr<const AppListFetcher> appFetcher);
  AppList(const AppList&) = delete;
  AppList& operator=(const AppList&) = delete;
  ~AppList();

  /// The list of the process, created by the first call. It uses the system's application workspace
  /// when the device root is "/", and the folders of the tree below any other root. Later changes
  /// of the root are not seen.
  static AppList& shared();
  /// Makes shared() use `appFetcher`. Call before the first use of shared(); a later call aborts
  /// the process.
  static void setSharedFetcher(std::unique_ptr<const AppListFetcher> appFetcher);

  /// Fetches the apps again, and then posts kDidReloadNotification on the calling thread, with no
  /// lock held. Of an app whose bundle is still in the same folder, the object stays the same, but
  /// IPA::forgetExecutables() is called. The fetcher's exceptions propagate and leave the list as
  /// it was. Blocks, and cannot be cancelled.
  void reload();

  /// The apps in the fetcher's order, including several with the same identifier. Every call
  /// until reload() returns the same objects. The fetcher's exceptions propagate.
  std::vector<std::shared_ptr<IPA>> apps();
  /// The first app with that identifier; null without a match.
  std::shared_ptr<IPA> app(const std::string& bundleID);
  /// The identifiers of all apps, each once, sorted.
  std::vector<std::string> identifiers();

 private:
  /// The lock must be held.
  void load();
  void loadIfNeeded();

  std::unique_ptr<const AppListFetcher> appFetcher_;
  bool hasLoadedApps_ = false;
  std::vector<std::shared_ptr<IPA>> cachedAppsArray_;
  std::map<std::string, std::shared_ptr<IPA>, std::less<>> cachedAppsDict_;
  std::mutex appLoadLock_;
};

}  // namespace tavlen
