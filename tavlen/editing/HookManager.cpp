#include "tavlen/editing/HookManager.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/items/TweakPoster.h"
#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/TweakFileDiff.h"

namespace tavlen {

namespace {

/// A predicate for hooks with `identity`. Compares the members, because Hook::identity() copies
/// them.
auto isOf(const MethodIdentity& identity) {
  return [&identity](const BoxedOptional<Hook>& hook) {
    return hook && hook->isClassMethod == identity.isClassMethod &&
           hook->selector == identity.selector && hook->className == identity.className;
  };
}

template <class Hooks>
auto firstOf(Hooks& hooks, const MethodIdentity& identity) {
  return std::find_if(hooks.begin(), hooks.end(), isOf(identity));
}

using Mode = TweakFile::Diff::Mode;

/// Lets `change` edit the manifest, stores it and posts the diff that `change` returns.
void edit(const HookManager& hook, FunctionRef<Mode(TweakFile::Manifest&)> change) {
  std::optional<Mode> mode;
  {
    const std::lock_guard lock(tweakPoster().recursiveLock);
    TweakFile::Manifest read;
    if (!hook.opened) read = hook.tweak->manifest();
    TweakFile::Manifest& manifest = hook.opened ? *hook.opened : read;
    mode = change(manifest);
    tweakPoster().performWithoutNotifications([&] { hook.tweak->setManifest(manifest); });
  }
  postTweakDiffs(NotificationCenter::default_(),
                 {std::make_shared<TweakFile::Diff>(hook.tweak, std::move(*mode))});
}

}  // namespace

Hook HookManager::hook() const {
  TweakFile::Manifest read;
  if (!opened) read = tweak->manifest();
  const auto& hooks = opened ? opened->_hooks : read._hooks;
  const auto found = firstOf(hooks, identity);
  if (found == hooks.end()) throw Error::hookNotFound();
  return **found;
}

void HookManager::setHook(const Hook& hook) const {
  edit(*this, [&](TweakFile::Manifest& manifest) -> Mode {
    const auto found = firstOf(manifest._hooks, identity);
    if (found == manifest._hooks.end()) {
      manifest._hooks.emplace_back(hook);
      return TweakFile::Diff::AddHooks{{hook}};
    }
    *found = hook;
    return TweakFile::Diff::UpdateHook{hook};
  });
}

void HookManager::updateHook(FunctionRef<void(Hook&)> change) const {
  edit(*this, [&](TweakFile::Manifest& manifest) -> Mode {
    const auto found = firstOf(manifest._hooks, identity);
    if (found == manifest._hooks.end()) throw Error::hookNotFound();
    Hook changed = **found;
    change(changed);
    *found = changed;
    return TweakFile::Diff::UpdateHook{std::move(changed)};
  });
}

void HookManager::deleteHook() const {
  edit(*this, [&](TweakFile::Manifest& manifest) -> Mode {
    std::erase_if(manifest._hooks, isOf(identity));
    return TweakFile::Diff::DeleteHook();
  });
}

HookManager TweakFile::managerFor(MethodIdentity identity) {
  return {shared_from_this(), std::move(identity), nullptr};
}

HookManager::Error HookManager::Error::hookNotFound() {
  return {Case::hookNotFound, {"hook_manager.error.hook_not_found", "Hook not found"}};
}

}  // namespace tavlen
