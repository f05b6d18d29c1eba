#include "tavlen/items/TweaksDirectory.h"

#include <string>
#include <system_error>

#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/base/UUID.h"

namespace tavlen::TweaksDirectory {

std::filesystem::path url() { return DeviceRoot::shared().resolve(kTweaksDir); }

std::filesystem::path create() {
  std::filesystem::path folder = url();
  std::filesystem::create_directories(folder);
  return folder;
}

std::filesystem::path uniqueURL(std::string_view suffix) {
  const std::filesystem::path folder = url();
  std::filesystem::path unique;
  std::error_code ignored;
  do {
    unique = folder / newUUIDText().append(suffix);
    // If the check itself fails, using the path will report why.
  } while (std::filesystem::exists(std::filesystem::symlink_status(unique, ignored)));
  return unique;
}

}  // namespace tavlen::TweaksDirectory
