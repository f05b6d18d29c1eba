#pragma once

#include <memory>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

class TweakFile;
template <class Kind>
class TypedParameterManager;

/// Reads and replaces one parameter of a stored tweak, at any depth.
///
/// The kinds are links of a chain: the root names an argument of a hook, each further link an item
/// of the collection that the link above it leads to. A link holds no parameter: reading goes down
/// from the root each time, and so does an edit, which reads and writes the manifest once and posts
/// one diff, however deep the parameter lies. Links are values; a copy shares the links above. A
/// chain is walked and let go by recursion: no stored document nests deeper than 512 levels, and no
/// chain should. Threads: any, as HookManager.
class ParameterManager {
 public:
  virtual ~ParameterManager() = default;

  /// The document that the chain leads to. Never null.
  virtual const std::shared_ptr<TweakFile>& tweak() const = 0;
  /// Throws what the link's kind says, and what the links above throw.
  virtual Parameter parameter() const = 0;
  /// As parameter(), and as HookManager::setHook(); nothing is written or posted after an error.
  virtual void setParameter(Parameter parameter) const = 0;
  /// A copy, to hang further links on.
  virtual std::shared_ptr<const ParameterManager> shared() const = 0;

  /// Reads the parameter, lets `change` edit it and writes it back. What `change` throws stops
  /// that. Throws as parameter() and setParameter().
  virtual void updateParameter(FunctionRef<void(Parameter&)> change) const = 0;

  /// This manager for parameters of one kind. Include TypedParameterManager.h to use it.
  template <class Kind>
  TypedParameterManager<Kind> typed() const;

 protected:
  ParameterManager() = default;
  ParameterManager(const ParameterManager&) = default;
  ParameterManager(ParameterManager&&) = default;
  ParameterManager& operator=(const ParameterManager&) = default;
  ParameterManager& operator=(ParameterManager&&) = default;
};

}  // namespace tavlen
