#include "tavlen/device/LSAppListFetcher.h"

#include <optional>
#include <utility>

#include "tavlen/device/detail/AppDisplayName.h"
#include "tavlen/device/detail/ExcludedApps.h"
#include "tavlen/foundation/objc/ObjCRuntime.h"

namespace tavlen {

namespace {

using namespace ObjCRuntime;

/// The object's answer; nil when it does not implement the selector, as on older systems.
id ask(id object, const char* selector) {
  return respondsTo(object, selector) ? send(object, selector) : nullptr;
}

bool confirms(id object, const char* selector) {
  return respondsTo(object, selector) && send<BOOL>(object, selector) != NO;
}

bool isHidden(id appTags) {
  if (!isKindOf(appTags, "NSArray")) return false;
  const auto count = send<unsigned long>(appTags, "count");
  for (unsigned long i = 0; i < count; ++i) {
    if (text(send(appTags, "objectAtIndex:", i)) == "hidden") return true;
  }
  return false;
}

std::optional<std::filesystem::path> folder(id url) {
  if (!isKindOf(url, "NSURL") || !confirms(url, "isFileURL")) return std::nullopt;
  const std::optional<std::string> path = text(ask(url, "path"));
  if (!path || !path->starts_with('/') || path->find('\0') != std::string::npos) {
    return std::nullopt;
  }
  const std::filesystem::path bundle(*path);
  return bundle.has_filename() ? bundle : bundle.parent_path();
}

std::optional<std::string> infoText(id proxy, const char* key) {
  constexpr const char* kQuestion = "objectForInfoDictionaryKey:ofClass:";
  if (!respondsTo(proxy, kQuestion)) return std::nullopt;
  return text(send(proxy, kQuestion, makeString(key), classNamed("NSString")));
}

std::optional<AppListApp> keptApp(id proxy, Class proxyClass) {
  if (!isKindOf(proxy, proxyClass)) return std::nullopt;
  if (confirms(proxy, "isLaunchProhibited") || confirms(proxy, "isPlaceholder") ||
      confirms(proxy, "isRemovedSystemApp")) {
    return std::nullopt;
  }
  std::optional<std::string> bundleID = text(ask(proxy, "bundleIdentifier"));
  if (!bundleID || isExcludedApp(*bundleID) || isHidden(ask(proxy, "appTags"))) {
    return std::nullopt;
  }
  std::optional<std::filesystem::path> bundle = folder(ask(proxy, "bundleURL"));
  if (!bundle) return std::nullopt;
  std::string displayName =
      appDisplayName([&](const char* key) { return infoText(proxy, key); }, *bundle);
  return AppListApp{std::move(*bundleID), std::move(displayName), std::move(*bundle)};
}

std::vector<AppListApp> keptApps(id proxies) {
  std::vector<AppListApp> apps;
  if (!isKindOf(proxies, "NSArray")) return apps;
  Class proxyClass = classNamed("LSApplicationProxy");
  const auto count = send<unsigned long>(proxies, "count");
  for (unsigned long i = 0; i < count; ++i) {
    runGuarded([&] {
      std::optional<AppListApp> app = keptApp(send(proxies, "objectAtIndex:", i), proxyClass);
      if (app) apps.push_back(std::move(*app));
    });
  }
  return apps;
}

}  // namespace

std::vector<AppListApp> LSAppListFetcher::fetchAllApps() const {
  std::vector<AppListApp> apps;
  const AutoreleasePool pool;
  runGuarded([&] {
    Class workspace = classNamed("LSApplicationWorkspace");
    apps = keptApps(send(send(workspace, "defaultWorkspace"), "allApplications"));
  });
  return apps;
}

}  // namespace tavlen
