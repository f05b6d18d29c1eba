#include "tavlen/items/TweakProtocol.h"

#include <cerrno>
#include <exception>
#include <system_error>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/text/TextComparison.h"
#include "tavlen/items/TweaksDirectory.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

/// The item's name is its identifier, so its path must end in one: not in a slash, "." or "..".
fs::path withName(fs::path url) {
  if (!url.has_filename()) url = url.parent_path();
  if (url.empty() || isPlainComponent(url.filename().native())) return url;
  url = fs::absolute(url).lexically_normal();
  return url.has_filename() ? url : url.parent_path();
}

/// Takes `item` out of sight in one step, into `folder`, and off the disk afterwards. Gives false
/// when that lies on another volume.
bool removeBy(const fs::path& folder, const fs::path& item) {
  const TemporaryDirectory trash(folder);
  std::error_code error;
  fs::rename(item, trash.path() / item.filename(), error);
  if (error == std::errc::cross_device_link) return false;
  if (error) throw std::system_error(error, item.string());
  return true;
}

}  // namespace

TweakProtocol::TweakProtocol(std::filesystem::path url) : url_(withName(std::move(url))) {}

bool TweakProtocol::isShownInSearchFor(std::string_view query) const {
  try {
    return localizedCaseInsensitiveContains(genericConfiguration().name(), query);
  } catch (const std::exception&) {
    return false;
  }
}

std::weak_ordering TweakProtocol::compareTo(const TweakProtocol& other) const {
  return localizedCaseInsensitiveCompare(genericConfiguration().name(),
                                         other.genericConfiguration().name());
}

std::shared_ptr<IPA> TweakProtocol::associatedIPA() const {
  return IPA::findWithBundleID(genericConfiguration().bundleID());
}

void TweakProtocol::uninstall() {
  try {
    const std::shared_ptr<IPA> ipa = associatedIPA();
    if (ipa->activeTweakID() == id()) ipa->setActiveTweak(nullptr);
  } catch (const std::exception&) {
    // As documented: what cannot be uninstalled is deleted all the same.
  }
}

void TweakProtocol::delete_() {
  uninstall();
  try {
    remove();
  } catch (const std::exception&) {
    // As documented; remove() tells.
  }
}

void TweakProtocol::remove() {
  const fs::path item = DeviceRoot::shared().followParent(fs::absolute(url()));
  const fs::path folder = item.parent_path();
  std::error_code ignored;
  if (fs::symlink_status(item, ignored).type() == fs::file_type::not_found) {
    throw std::system_error(ENOENT, std::generic_category(), item.string());
  }
  // Stored items leave the tweaks directory; others, and those on a volume of their own, move
  // within the folder that they lie in.
  const bool isStored = fs::equivalent(folder, TweaksDirectory::url(), ignored);
  if (isStored && removeBy(DeviceRoot::shared().resolve(kApplicationSupportDir), item)) return;
  if (!removeBy(folder, item)) {
    throw std::system_error(EXDEV, std::generic_category(), item.string());
  }
}

}  // namespace tavlen
