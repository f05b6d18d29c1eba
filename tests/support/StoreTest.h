#pragma once

#include "tavlen/collections/TweakCollectionDiff.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/items/TweaksDirectory.h"
#include "tavlen/tweaks/TweakFileDiff.h"
#include "tests/support/TemporaryFolder.h"

namespace tavlen {

/// The name of a diff's mode, and the selectors of its hooks: "updateHook a".
inline std::string nameOf(const TweakDiffProtocol& diff) {
  static constexpr const char* kTweakModes[] = {
      "updateHook", "addHooks", "create", "updateManifest", "updateIcon", "deleteHook", "delete"};
  static constexpr const char* kCollectionModes[] = {"create", "updateManifest", "delete"};
  if (const auto* tweak = dynamic_cast<const TweakFile::Diff*>(&diff)) {
    std::string text = kTweakModes[tweak->mode.index()];
    using Mode = TweakFile::Diff;
    if (const auto* update = std::get_if<Mode::UpdateHook>(&tweak->mode)) {
      text += " " + update->hook.selector;
    } else if (const auto* added = std::get_if<Mode::AddHooks>(&tweak->mode)) {
      for (const Hook& hook : added->hooks) text += " " + hook.selector;
    }
    return text;
  }
  const auto& collection = dynamic_cast<const TweakCollection::Diff&>(diff);
  return std::string("collection ") + kCollectionModes[static_cast<int>(collection.mode)];
}

/// A device tree with an empty store. Notes what is announced.
///
/// The tree is that of the process, as the shared app list is, and is empty for every test.
class StoreTest : public testing::Test {
 protected:
  static constexpr const char* kTweakManifest =
      R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b"},"overrides":[],"hooks":[]})";

  StoreTest() {
    DeviceRoot::setShared(DeviceRoot(root_.path()));
    for (const auto& entry : fs::directory_iterator(root_.path())) {
      removeItem(entry.path());
    }
    token_ = NotificationCenter::default_().addObserver(
        std::string(kTweaksDidUpdateNotification), nullptr,
        [this](const Notification& notification) { note(notification); });
  }
  ~StoreTest() override {
    NotificationCenter::default_().removeObserver(token_);
    DeviceRoot::setShared(DeviceRoot());
  }

  static std::shared_ptr<TweakFile> newTweak(const std::string& name) {
    return TweakFile::create(name, TweakColor::darkRed, TweakGlyph::default_(), "a.b");
  }
  static std::shared_ptr<TweakCollection> newCollection(const std::string& name) {
    return TweakCollection::create(name, TweakColor::darkRed, TweakGlyph::default_(), "a.b");
  }

  /// The diffs since the last call, as their modes' names; a list of several in brackets.
  std::vector<std::string> announced() {
    const std::lock_guard lock(lock_);
    return std::exchange(announced_, {});
  }

  /// How many entries the store's folder has, hidden ones too.
  static std::ptrdiff_t storedEntries() {
    const auto folder = TweaksDirectory::url();
    if (!fs::exists(folder)) return 0;
    return std::distance(fs::directory_iterator(folder), {});
  }
  /// Whether operations have left temporary items beside the store.
  static bool leftTemporaryItems() {
    return fs::exists(TweaksDirectory::url().parent_path() / ".TemporaryItems");
  }

  static const TemporaryFolder& tree() {
    static const TemporaryFolder folder;
    return folder;
  }

  const TemporaryFolder& root_ = tree();

 private:
  void note(const Notification& notification) {
    const auto& diffs = std::any_cast<const TweakDiffs&>(notification.userInfo->at("diffs"));
    std::string text;
    for (const TweakDiff& diff : diffs) {
      text += (text.empty() ? "" : ", ") + (diff != nullptr ? nameOf(*diff) : "null");
    }
    const std::lock_guard lock(lock_);
    announced_.push_back(diffs.size() == 1 ? text : "[" + text + "]");
  }

  NotificationCenter::Token token_{};
  std::mutex lock_;
  std::vector<std::string> announced_;  ///< guarded by lock_
};

}  // namespace tavlen
