#include "tavlen/tweaks/TweakProtocol.h"

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DevicePaths.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/FileTree.h"
#include "tavlen/foundation/TemporaryDirectory.h"
#include "tavlen/foundation/TextComparison.h"

namespace tavlen {

bool TweakProtocol::isShownInSearchFor(std::string_view query) const {
  try {
    return localizedCaseInsensitiveContains(genericManifest().genericConfiguration().name(), query);
  } catch (const std::exception&) {
    return false;
  }
}

std::weak_ordering TweakProtocol::compareTo(const TweakProtocol& other) const {
  return localizedCaseInsensitiveCompare(genericManifest().genericConfiguration().name(),
                                         other.genericManifest().genericConfiguration().name());
}

std::shared_ptr<IPA> TweakProtocol::associatedIPA() const {
  return IPA::findWithBundleID(genericManifest().genericConfiguration().bundleID());
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
  const TemporaryDirectory trash(DeviceRoot::shared().resolve(kApplicationSupportDir));
  moveItem(url(), trash.path() / url().filename());
}

}  // namespace tavlen
