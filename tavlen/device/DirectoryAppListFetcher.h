#pragma once

#include <vector>

#include "tavlen/device/AppListFetcher.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Finds the apps in the application folders of a device tree, sorted by path, without services and
/// hidden apps.
///
/// An app is a folder "*.app" whose Info.plist has a string "CFBundleIdentifier". Unreadable ones
/// are ignored. Symbolic links are followed as on the device, so they do not lead out of the tree;
/// a folder with several links to it is one app. Threads: any.
class TAVLEN_API DirectoryAppListFetcher final : public AppListFetcher {
 public:
  /// Searches the tree of `root`.
  explicit DirectoryAppListFetcher(DeviceRoot root);

  /// All apps; reads the tree on each call.
  std::vector<AppListApp> fetchAllApps() const override;

  /// Calls `visit` with each of these apps, in order, and its Info.plist, to save reading it again.
  /// Exceptions of `visit` propagate.
  void visitAllApps(FunctionRef<void(const AppListApp& app, const PropertyList& info)> visit) const;

 private:
  DeviceRoot root_;
};

}  // namespace tavlen
