#include "tavlen/device/AppControl.h"

#include "tavlen/device/ProcessControl.h"
#include "tavlen/device/SystemService.h"

namespace tavlen {

void killAppWithBundleID(const std::string& bundleID) {
  if (const std::optional<pid_t> pid = SystemService::pidForApplication(bundleID)) {
    killProcessWithPID(*pid);
  }
}

}  // namespace tavlen
