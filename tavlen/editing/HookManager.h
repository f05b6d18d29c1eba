#pragma once

#include <memory>
#include <string>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/introspection/classes/MethodIdentity.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

struct Hook;

/// Finds and rewrites one hook of a stored tweak.
///
/// Every call reads the manifest, unless the manager has one that was read. Every edit is one step
/// under tweakPoster()'s lock, reads and writes the manifest once, posts one diff once the lock is
/// free, whatever is silenced, and keeps the other hooks and the places of absent ones. What
/// TweakFile::manifest() and setManifest() throw passes through; nothing is written or posted then.
/// Threads: any, one manager with a manifest of its own one thread at a time. hook() and an edit
/// after it are not one step; where others may edit the same hook, hold tweakPoster()'s lock around
/// both.
class HookManager {
 public:
  enum class ErrorCase { hookNotFound };
  class Error;

  /// Never null.
  std::shared_ptr<TweakFile> tweak;
  MethodIdentity identity;
  /// The tweak's manifest as the caller has read it, which stands for what is stored: edits begin
  /// with it and change it, even where storing it fails. Null for the disk.
  std::shared_ptr<TweakFile::Manifest> opened;

  /// The first hook of that identity. Throws Error::hookNotFound.
  Hook hook() const;
  /// Puts `hook` in the place of the first one of this manager's identity, whatever its own is, and
  /// at the end where there is none. Posts UpdateHook or AddHooks.
  void setHook(const Hook& hook) const;
  /// Lets `change` edit the hook and stores it. Throws as hook(), and what `change` throws. What
  /// `change` stores in the tweak by other ways is lost.
  void updateHook(FunctionRef<void(Hook&)> change) const;
  /// Removes every hook of that identity. Writes, and posts DeleteHook, even where there is none.
  void deleteHook() const;
};

class HookManager::Error : public CasedError<HookManager::ErrorCase> {
 public:
  static Error hookNotFound();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
