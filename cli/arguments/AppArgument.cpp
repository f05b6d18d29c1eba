#include "cli/arguments/AppArgument.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "cli/terminal/ShownText.h"
#include "tavlen/bundles/AppList.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/InfoPlist.h"

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
  if (!isPath(text)) return IPA::findWithBundleID(text);
  const std::filesystem::path folder = hostPath(text);
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

bool isInstalledApp(const std::string& bundleID) {
  return AppList::shared().app(bundleID) != nullptr;
}

std::runtime_error withInfoPath(const IPA& ipa, const DecodingError& error) {
  return std::runtime_error(shownPath(ipa.appDir() / kInfoPlistFilename) + ": " + errorText(error));
}

Info readInfo(const IPA& ipa) {
  return namingInfo(ipa, [&] { return ipa.infoManager().info(); });
}

}  // namespace tavlen::cli
