#pragma once

#include <memory>
#include <string>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/introspection/classes/MethodIdentity.h"

namespace tavlen {

class TweakFile;
struct Hook;

/// Finds and rewrites one hook of a stored tweak.
///
/// It holds no hook: every call reads the manifest. Writing is one step under tweakPoster()'s lock,
/// posts one diff once the lock is free, whatever is silenced, and keeps the other hooks and the
/// places of absent ones. What TweakFile::manifest() and setManifest() throw passes through;
/// nothing is written or posted then.
/// Threads: any. An edit that begins with reading the hook is not one step with its write; where
/// others may edit the same hook, hold tweakPoster()'s lock around both.
class HookManager {
 public:
  enum class ErrorCase { hookNotFound };
  class Error;

  /// Never null.
  std::shared_ptr<TweakFile> tweak;
  MethodIdentity identity;

  /// The first hook of that identity. Throws Error::hookNotFound.
  Hook hook() const;
  /// Puts `hook` in the place of the first one of this manager's identity, whatever its own is, and
  /// at the end where there is none. Posts UpdateHook or AddHooks.
  void setHook(const Hook& hook) const;
  /// Lets `change` edit the hook and stores it. Throws as hook(), and what `change` throws.
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
