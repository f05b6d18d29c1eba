#include "tavlen/device/DirectoryAppListFetcher.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "tavlen/device/InfoPlist.h"
#include "tavlen/device/detail/AppDisplayName.h"
#include "tavlen/device/detail/ExcludedApps.h"
#include "tavlen/foundation/plist/PropertyListSerialization.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

/// The folder that `entry` is or links to, with the device's links; nothing for other entries.
std::optional<fs::path> folderAt(const DeviceRoot& root, const fs::directory_entry& entry) {
  try {
    if (!entry.is_symlink())
      return entry.is_directory() ? std::optional(entry.path()) : std::nullopt;
    fs::path place = root.follow(entry.path());
    if (fs::is_directory(place)) return place;
  } catch (const std::system_error&) {
    // The entry has vanished, or is part of a cycle of links.
  }
  return std::nullopt;
}

/// Calls `visit` with name and path of each folder in `folder`, in no particular order. Ignores a
/// folder that cannot be read.
void visitFolders(const DeviceRoot& root, const fs::path& folder,
                  FunctionRef<void(const fs::path& name, fs::path place)> visit) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    std::optional<fs::path> place = folderAt(root, *entry);
    if (place) visit(entry->path().filename(), std::move(*place));
  }
}

/// The host path of the device's folder `devicePath`; a path that does not exist when its links
/// form a cycle.
fs::path placeOf(const DeviceRoot& root, const char* devicePath) {
  try {
    return root.resolve(devicePath);
  } catch (const std::system_error&) {
    return {};
  }
}

void appendBundles(const DeviceRoot& root, const fs::path& folder, std::vector<fs::path>& bundles) {
  visitFolders(root, folder, [&](const fs::path& name, fs::path place) {
    if (name.extension() == ".app") bundles.push_back(std::move(place));
  });
}

std::vector<fs::path> sortedBundles(const DeviceRoot& root) {
  std::vector<fs::path> bundles;
  appendBundles(root, placeOf(root, "/Applications"), bundles);
  visitFolders(
      root, placeOf(root, "/var/containers/Bundle/Application"),
      [&](const fs::path&, const fs::path& container) { appendBundles(root, container, bundles); });
  std::sort(bundles.begin(), bundles.end());
  bundles.erase(std::unique(bundles.begin(), bundles.end()), bundles.end());
  return bundles;
}

std::optional<PropertyList> readInfo(const DeviceRoot& root, const fs::path& bundle) {
  try {
    return readPropertyList(readInfoPlist(root, bundle));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

std::optional<std::string> textUnder(const PropertyList& info, const char* key) {
  const std::optional<std::string_view> text = info.findString(info.root(), key);
  if (!text) return std::nullopt;
  return std::string(*text);
}

bool isHidden(const PropertyList& info) {
  const std::optional<PropertyList::Index> tags = info.find(info.root(), "SBAppTags");
  const auto array = tags ? info.get<PropertyList::Array>(*tags) : std::nullopt;
  return array &&
         std::any_of(array->elements.begin(), array->elements.end(), [&](PropertyList::Index tag) {
           return info.get<std::string_view>(tag) == "hidden";
         });
}

std::optional<AppListApp> keptApp(const PropertyList& info, const fs::path& bundle) {
  std::optional<std::string> bundleID = textUnder(info, "CFBundleIdentifier");
  if (!bundleID || isExcludedApp(*bundleID) || isHidden(info)) return std::nullopt;
  return AppListApp{std::move(*bundleID),
                    appDisplayName([&](const char* key) { return textUnder(info, key); }, bundle),
                    bundle};
}

}  // namespace

DirectoryAppListFetcher::DirectoryAppListFetcher(DeviceRoot root) : root_(std::move(root)) {}

std::vector<AppListApp> DirectoryAppListFetcher::fetchAllApps() const {
  std::vector<AppListApp> apps;
  visitAllApps([&](const AppListApp& app, const PropertyList&) { apps.push_back(app); });
  return apps;
}

void DirectoryAppListFetcher::visitAllApps(
    FunctionRef<void(const AppListApp& app, const PropertyList& info)> visit) const {
  for (const fs::path& bundle : sortedBundles(root_)) {
    const std::optional<PropertyList> info = readInfo(root_, bundle);
    const std::optional<AppListApp> app = info ? keptApp(*info, bundle) : std::nullopt;
    if (app) visit(*app, *info);
  }
}

}  // namespace tavlen
