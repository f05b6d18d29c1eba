#pragma once

#include <vector>

#include "tavlen/device/AppListApp.h"
#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A source of the apps in an app list.
class TAVLEN_API AppListFetcher {
 public:
  virtual ~AppListFetcher() = default;

  /// Returns all apps that tweaks can be made for, without unreadable ones. Threads: any.
  virtual std::vector<AppListApp> fetchAllApps() const = 0;
};

}  // namespace tavlen
