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

/// `url` without a slash, "." or ".." at its end: an item's identifier is the last component.
fs::path withName(fs::path url) {
  if (!url.has_filename()) url = url.parent_path();
  if (url.empty() || isPlainComponent(url.filename().native())) return url;
  url = fs::absolute(url).lexically_normal();
  return url.has_filename() ? url : url.parent_path();
}

/// Renames `item` into `folder`, so that it disappears in one step, and then deletes it. Returns
/// false if `folder` lies on another volume.
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
    // As documented. delete_() goes on to delete the item in any case.
  }
}

void TweakProtocol::delete_() {
  uninstall();
  try {
    remove();
  } catch (const std::exception&) {
    // As documented; callers that need the error use remove().
  }
}

void TweakProtocol::remove() {
  const fs::path item = fs::absolute(url());
  const fs::path folder = item.parent_path();
  std::error_code ignored;
  if (fs::symlink_status(item, ignored).type() == fs::file_type::not_found) {
    throw std::system_error(ENOENT, std::generic_category(), item.string());
  }
  // A stored item moves out of the tweaks directory. An item that lies elsewhere, or on another
  // volume, moves within its own folder.
  const bool isStored = fs::equivalent(folder, TweaksDirectory::url(), ignored);
  if (isStored && removeBy(DeviceRoot::shared().resolve(kApplicationSupportDir), item)) return;
  if (!removeBy(folder, item)) {
    throw std::system_error(EXDEV, std::generic_category(), item.string());
  }
}

}  // namespace tavlen
