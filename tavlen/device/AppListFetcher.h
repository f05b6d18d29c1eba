#pragma once

#include <vector>

#include "tavlen/device/AppListApp.h"

namespace tavlen {

/// Where an app list gets its apps from.
class AppListFetcher {
 public:
  virtual ~AppListFetcher() = default;

  /// All apps that a tweak can be made for. What cannot be read is left out.
  virtual std::vector<AppListApp> fetchAllApps() const = 0;
};

}  // namespace tavlen
