#include "tavlen/editing/HookManager.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/TweakFile.h"
#include "tavlen/tweaks/TweakFileDiff.h"

namespace tavlen {

namespace {

/// Tells the hooks of an identity, without a copy of theirs.
auto isOf(const MethodIdentity& identity) {
  return [&identity](const std::optional<Hook>& hook) {
    return hook && hook->isClassMethod == identity.isClassMethod &&
           hook->selector == identity.selector && hook->className == identity.className;
  };
}

template <class Hooks>
auto firstOf(Hooks& hooks, const MethodIdentity& identity) {
  return std::find_if(hooks.begin(), hooks.end(), isOf(identity));
}

void post(const std::shared_ptr<TweakFile>& tweak, TweakFile::Diff::Mode mode) {
  postTweakDiffs(NotificationCenter::default_(),
                 {std::make_shared<TweakFile::Diff>(tweak, std::move(mode))});
}

}  // namespace

Hook HookManager::hook() const {
  TweakFile::Manifest manifest = tweak->manifest();
  const auto found = firstOf(manifest._hooks, identity);
  if (found == manifest._hooks.end() || !*found) throw Error::hookNotFound();
  return *std::move(*found);
}

void HookManager::setHook(const Hook& hook) const {
  bool isThere = false;
  tweakPoster().performWithoutNotifications([&] {
    TweakFile::Manifest manifest = tweak->manifest();
    const auto found = firstOf(manifest._hooks, identity);
    isThere = found != manifest._hooks.end();
    if (isThere) {
      *found = hook;
    } else {
      manifest._hooks.emplace_back(hook);
    }
    tweak->setManifest(manifest);
  });
  if (isThere) {
    post(tweak, TweakFile::Diff::UpdateHook{hook});
  } else {
    post(tweak, TweakFile::Diff::AddHooks{{hook}});
  }
}

void HookManager::updateHook(FunctionRef<void(Hook&)> change) const {
  Hook changed = hook();
  change(changed);
  setHook(changed);
}

void HookManager::deleteHook() const {
  tweakPoster().performWithoutNotifications([&] {
    TweakFile::Manifest manifest = tweak->manifest();
    std::erase_if(manifest._hooks, isOf(identity));
    tweak->setManifest(manifest);
  });
  post(tweak, TweakFile::Diff::DeleteHook());
}

HookManager TweakFile::managerFor(MethodIdentity identity) {
  return {shared_from_this(), std::move(identity)};
}

HookManager::Error HookManager::Error::hookNotFound() {
  return {Case::hookNotFound, {"hook_manager.error.hook_not_found", "Hook not found"}};
}

}  // namespace tavlen
