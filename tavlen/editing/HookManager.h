#pragma once

#include <memory>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/introspection/classes/MethodIdentity.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

struct Hook;

/// Finds and edits one hook of a stored tweak.
///
/// Every call reads the manifest, unless `opened` is set. Every edit holds tweakPoster()'s lock,
/// reads and stores the manifest once, and keeps the other hooks and the empty entries. After
/// releasing the lock it posts one diff, even if tweakPoster() is silenced. Every function throws
/// what TweakFile::manifest() and setManifest() throw; nothing is then stored or posted.
/// Threads: any; but a manager with `opened` on one thread at a time. hook() and a later edit are
/// two steps: if the hook may be edited concurrently, hold tweakPoster()'s lock around both.
class TAVLEN_API HookManager {
 public:
  /// The cases of Error.
  enum class ErrorCase { hookNotFound };
  class Error;

  /// The edited tweak. Never null.
  std::shared_ptr<TweakFile> tweak;
  /// The hooked method.
  MethodIdentity identity;
  /// The manifest, if the caller has read it already. It is then used instead of the stored one,
  /// and every edit changes it, even if storing it fails. Null to read the disk.
  std::shared_ptr<TweakFile::Manifest> opened;

  /// The first hook with the manager's identity. Throws Error::hookNotFound.
  Hook hook() const;
  /// Replaces the first hook with the manager's identity by `hook`, whose own identity may differ.
  /// If no such hook exists, adds `hook` at the end. Posts UpdateHook or AddHooks.
  void setHook(const Hook& hook) const;
  /// Lets `change` edit the hook and stores the result. Posts UpdateHook. Throws
  /// Error::hookNotFound and what `change` throws. If `change` itself stores something in the
  /// tweak's manifest, that is overwritten.
  void updateHook(FunctionRef<void(Hook&)> change) const;
  /// Removes every hook with the manager's identity. Stores the manifest and posts DeleteHook even
  /// if no such hook exists.
  void deleteHook() const;
};

/// A hook that does not exist.
class TAVLEN_API HookManager::Error : public CasedError<HookManager::ErrorCase> {
 public:
  /// The tweak has no hook with the manager's identity.
  static Error hookNotFound();

 private:
  using CasedError::CasedError;
};

}  // namespace tavlen
