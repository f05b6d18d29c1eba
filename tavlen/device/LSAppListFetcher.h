#pragma once

#include "tavlen/device/AppListFetcher.h"
#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Lists the apps of the system's application workspace, a private class that is looked up by name;
/// without the class the list is empty. In the workspace's order, without services, placeholders
/// and hidden apps.
///
/// Apps that return unexpected values or raise an exception are left out. Threads: any.
class TAVLEN_API LSAppListFetcher final : public AppListFetcher {
 public:
  /// All apps; asks the workspace on each call.
  std::vector<AppListApp> fetchAllApps() const override;
};

}  // namespace tavlen
