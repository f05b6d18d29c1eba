#pragma once

#include "tavlen/device/AppListFetcher.h"

namespace tavlen {

/// The apps of the system's application workspace, a private class that is looked up by name: none
/// where it is missing. In the workspace's order, without services, placeholders and hidden apps.
///
/// An app that answers what nobody expects, or raises an exception, is left out; the others stay.
/// Threads: any.
class LSAppListFetcher final : public AppListFetcher {
 public:
  std::vector<AppListApp> fetchAllApps() const override;
};

}  // namespace tavlen
