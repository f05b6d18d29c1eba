#include "tavlen/device/DevicePrograms.h"

#include <mutex>
#include <system_error>
#include <utility>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"

namespace tavlen {

namespace {

std::mutex hostsLock;
/// Never destroyed: other threads may ask while the process ends.
DevicePrograms& hostsPrograms() {
  static DevicePrograms& programs = *new DevicePrograms;
  return programs;
}

std::filesystem::path onDevice(std::string_view path) {
  try {
    return DeviceRoot::shared().resolve(path);
  } catch (const std::system_error&) {
    return {};
  }
}

}  // namespace

DevicePrograms DevicePrograms::shared() {
  if (DeviceRoot::shared().isDevice()) {
    return {onDevice(kFileOperationsPath), onDevice("/bin/kill"), onDevice("/usr/bin/killall")};
  }
  const std::lock_guard lock(hostsLock);
  return hostsPrograms();
}

void DevicePrograms::setForOtherRoots(DevicePrograms programs) {
  const std::lock_guard lock(hostsLock);
  hostsPrograms() = std::move(programs);
}

}  // namespace tavlen
