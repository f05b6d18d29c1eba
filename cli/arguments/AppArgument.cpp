#include "cli/arguments/AppArgument.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "cli/arguments/ArchiveFile.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/bundles/AppList.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/DirectoryAppListFetcher.h"
#include "tavlen/device/InfoPlist.h"
#include "tavlen/device/LSAppListFetcher.h"
#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen::cli {

std::filesystem::path hostPath(const std::string& text) {
  std::error_code ignored;
  const DeviceRoot root = DeviceRoot::shared();
  if (text.starts_with('/') && !std::filesystem::exists(text, ignored)) {
    std::filesystem::path inRoot = root.resolve(text);
    if (std::filesystem::exists(inRoot, ignored)) return inRoot;
  }
  return root.follow(text);
}

bool isPath(const std::string& text) {
  std::error_code ignored;
  return text.find('/') != std::string::npos ||
         (std::filesystem::is_directory(text, ignored) &&
          (text.ends_with(".app") ||
           std::filesystem::exists(std::filesystem::path(text) / kInfoPlistFilename, ignored)));
}

std::shared_ptr<IPA> appArgument(const std::string& text) {
  if (isArchive(text)) {
    throw std::runtime_error(
        text + ": is an archive; expected the bundle identifier of an app, or its bundle folder");
  }
  if (!isPath(text)) return appWithBundleID(text);
  const std::filesystem::path folder = hostPath(text);
  if (std::filesystem::is_regular_file(DeviceRoot::shared().status(folder)))
    throw std::system_error(ENOTDIR, std::generic_category(), text);
  if (::access(folder.c_str(), X_OK) != 0) {
    throw std::system_error(errno, std::generic_category(), text);
  }
  try {
    return IPA::openAt(folder);
  } catch (const IPA::Error& error) {
    throw std::runtime_error(text + ": " + errorText(error));
  }
}

std::string bundleIDOf(const std::string& text) {
  return isPath(text) ? readInfo(*appArgument(text)).bundleID : text;
}

std::string unknownAppText(const std::string& text) {
  const std::string suggestion = appSuggestion(text);
  return "no app has this identifier" +
         (suggestion.empty() ? " (tavlen apps lists the apps)" : suggestion);
}

std::shared_ptr<IPA> appWithBundleID(const std::string& bundleID) {
  if (std::shared_ptr<IPA> app = AppList::shared().app(bundleID)) return app;
  throw std::runtime_error(bundleID + ": " + unknownAppText(bundleID));
}

bool isInstalledApp(const std::string& bundleID) {
  return AppList::shared().app(bundleID) != nullptr;
}

void warnIfNotInstalled(const std::string& bundleID) {
  if (isInstalledApp(bundleID)) return;
  printWarning(bundleID + ": no app with that identifier is installed" + appSuggestion(bundleID));
}

std::vector<AppListApp> fetchedApps() {
  if (DeviceRoot::shared().isDevice()) return LSAppListFetcher().fetchAllApps();
  return DirectoryAppListFetcher(DeviceRoot::shared()).fetchAllApps();
}

std::string appSuggestion(const std::string& text) {
  const std::vector<AppListApp> apps = fetchedApps();
  std::vector<std::string_view> identifiers;
  std::vector<std::string_view> names;
  for (const AppListApp& app : apps) {
    identifiers.emplace_back(app.bundleID);
    names.emplace_back(app.displayName);
  }
  std::optional<std::string_view> meant = closestName(text, identifiers);
  if (const auto name = closestName(text, names); name && !meant) {
    meant = identifiers.at(
        static_cast<std::size_t>(std::find(names.begin(), names.end(), *name) - names.begin()));
  }
  return meant ? "; did you mean \"" + std::string(*meant) + "\"?" : "";
}

std::runtime_error withInfoPath(const IPA& ipa, const DecodingError& error) {
  return std::runtime_error(shownPath(ipa.appDir() / kInfoPlistFilename) + ": " + errorText(error));
}

Info readInfo(const IPA& ipa) {
  return namingInfo(ipa, [&] { return ipa.infoManager().info(); });
}

}  // namespace tavlen::cli
