#include "cli/items/ActiveTweak.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "cli/arguments/AppArgument.h"
#include "cli/terminal/Console.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/device/FileOperations.h"
#include "tavlen/device/InstalledRecords.h"
#include "tavlen/device/Process.h"

namespace tavlen::cli {

std::optional<std::string> activeTweakID(const std::string& bundleID) {
  const std::optional<TweakInfo> record = InstalledRecords::record(bundleID);
  return record ? record->tweakID : std::nullopt;
}

bool isActiveTweak(const std::string& bundleID, const std::string& id) {
  return activeTweakID(bundleID) == id;
}

std::map<std::string, std::string> activeTweakIDs() {
  namespace fs = std::filesystem;
  std::map<std::string, std::string> ids;
  std::error_code error;  // without the folder, nothing is installed
  fs::directory_iterator entry(DeviceRoot::shared().resolve(kInstalledTweaksDir), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::string bundleID = entry->path().filename().string();
    if (std::optional<std::string> id = activeTweakID(bundleID)) {
      ids.emplace(std::move(bundleID), std::move(*id));
    }
  }
  return ids;
}

std::optional<std::string> appWithActiveTweak(const std::string& id) {
  for (const auto& [bundleID, active] : activeTweakIDs()) {
    if (active == id) return bundleID;
  }
  return std::nullopt;
}

void tellThatNothingRuns() {
  if (DeviceRoot::shared().isDevice()) return;
  printNote("not a running device: the app is not ended and the home screen not restarted");
}

void setActiveTweak(IPA& ipa, const InstallableTweak* tweak) {
  tellThatNothingRuns();
  try {
    namingInfo(ipa, [&] { ipa.setActiveTweak(tweak); });
  } catch (const Process::Error& error) {
    throw std::runtime_error(FileOperations::helper().string() + ": " + errorText(error));
  }
}

}  // namespace tavlen::cli
