#include "tavlen/device/SystemService.h"

#include "tavlen/foundation/ObjCRuntime.h"

namespace tavlen::SystemService {

namespace {

using namespace ObjCRuntime;

/// To be called inside runGuarded().
id sharedService() { return send(classNamed("FBSSystemService"), "sharedService"); }

}  // namespace

bool isAvailable() {
  bool available = false;
  const AutoreleasePool pool;
  runGuarded([&] { available = sharedService() != nullptr; });
  return available;
}

std::optional<pid_t> pidForApplication(const std::string& bundleID) {
  pid_t pid = -1;
  const AutoreleasePool pool;
  runGuarded([&] {
    id service = sharedService();
    id identifier = makeString(bundleID);
    if (service != nullptr && identifier != nullptr) {
      pid = send<pid_t>(service, "pidForApplication:", identifier);
    }
  });
  // Anything below would address a group of processes, or all of them.
  if (pid < 1) return std::nullopt;
  return pid;
}

}  // namespace tavlen::SystemService
