#include "tavlen/device/TweakInfo.h"

#include <system_error>

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen {

namespace {

/// The contents of the file at `url`; nothing when it cannot be read.
std::optional<std::string> contentsOf(const URL& url) {
  const auto devicePath = url.path();
  if (!devicePath) return std::nullopt;
  try {
    const DeviceRoot root = DeviceRoot::shared();
    return readFileUpTo(openedFile(root, root.resolve(devicePath->native())),
                        TweakInfo::kLargestIcon);
  } catch (const std::system_error&) {
    return std::nullopt;
  }
}

}  // namespace

bool TweakInfo::shouldRespringAfterChangingFromOther(const std::optional<TweakInfo>& other) const {
  const std::optional<URL> otherIconURL = other ? other->customIconURL : std::nullopt;
  if (!customIconURL || !otherIconURL) return customIconURL.has_value() != otherIconURL.has_value();
  return contentsOf(*customIconURL) != contentsOf(*otherIconURL);
}

}  // namespace tavlen
