#include "tavlen/items/TweakProtocol.h"

#include <cerrno>
#include <exception>
#include <system_error>
#include <utility>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryFile.h"
#include "tavlen/foundation/text/TextComparison.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

/// `path` without a slash, "." or ".." at its end: an item's identifier is the last component.
std::string withName(std::string path) {
  if (isPlainComponent(std::string_view(path).substr(path.rfind('/') + 1))) return path;
  fs::path url = std::move(path);
  if (!url.has_filename()) url = url.parent_path();
  if (url.empty() || isPlainComponent((--url.end())->native())) return url;
  url = fs::absolute(url).lexically_normal();
  return url.has_filename() ? url : url.parent_path();
}

}  // namespace

TweakProtocol::TweakProtocol(std::string path) : path_(withName(std::move(path))) {}

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
  const fs::path item = DeviceRoot::shared().followParent(fs::absolute(url()));
  // Renamed first, to a name that lists leave out, so that the item disappears in one step. The new
  // name is in the same folder: making a folder for it would need space on the disk.
  const fs::path hidden = item.parent_path() / temporaryName();
  std::error_code error;
  fs::rename(item, hidden, error);
  if (!error) return removeQuietly(hidden);
  // On a full disk even a name may find no room.
  const bool isFull = error == std::errc::no_space_on_device || error.value() == EDQUOT;
  if (!isFull) throw std::system_error(error, item.string());
  removeItem(item);
}

}  // namespace tavlen
