#pragma once

#include <vector>

#include "tavlen/device/AppListFetcher.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// The apps that lie in the folders of a device tree, sorted by path, without services and hidden
/// apps.
///
/// An app is a folder "*.app" with an Info.plist that holds a string "CFBundleIdentifier"; what
/// cannot be read is no app. Symbolic links are followed as on the device, so that none leads out
/// of the tree; a folder that several of them name is one app. Threads: any.
class DirectoryAppListFetcher final : public AppListFetcher {
 public:
  explicit DirectoryAppListFetcher(DeviceRoot root);

  std::vector<AppListApp> fetchAllApps() const override;

  /// Calls `visit` with each app of the list, in its order, and the Info.plist, which is read just
  /// once. What `visit` throws passes.
  void visitAllApps(FunctionRef<void(const AppListApp& app, const PropertyList& info)> visit) const;

 private:
  DeviceRoot root_;
};

}  // namespace tavlen
