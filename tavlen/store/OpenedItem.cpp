#include "tavlen/store/OpenedItem.h"

namespace tavlen {

std::shared_ptr<TweakProtocol> OpenedItem::item() const {
  return std::visit(
      [](const auto& opened) -> std::shared_ptr<TweakProtocol> { return opened.file; }, *this);
}

TweakConfiguration OpenedItem::configuration() const {
  return std::visit([](const auto& opened) { return opened.manifest.genericConfiguration(); },
                    *this);
}

TweakManifest OpenedItem::manifest() const {
  return std::visit([](const auto& opened) { return TweakManifest(opened.manifest); }, *this);
}

}  // namespace tavlen
