#include "cli/work/ActiveTweak.h"

#include <optional>
#include <stdexcept>

#include "cli/arguments/AppArgument.h"
#include "tavlen/device/FileOperations.h"
#include "tavlen/device/InstalledRecords.h"
#include "tavlen/device/Process.h"

namespace tavlen::cli {

bool isActiveTweak(const std::string& bundleID, const std::string& id) {
  const std::optional<TweakInfo> record = InstalledRecords::record(bundleID);
  return record && record->tweakID == id;
}

void setActiveTweak(IPA& ipa, const InstallableTweak* tweak) {
  try {
    ipa.setActiveTweak(tweak);
  } catch (const Process::Error& error) {
    throw std::runtime_error(FileOperations::helper().string() + ": " + error.description());
  }
}

}  // namespace tavlen::cli
