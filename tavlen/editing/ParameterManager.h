#pragma once

#include <memory>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

class TweakFile;
template <class Kind>
class TypedParameterManager;

/// Reads and replaces one parameter of a stored tweak, at any depth.
///
/// Managers form a chain of links. The root names an argument of a hook; every further link names
/// an item of the collection to which its parent link leads. For example, the value of the second
/// pair of a dictionary that replaces argument 0:
///
///     RootParameterManager(hook, 0) <- DictionaryParameterManager(1, value)
///
/// A link holds no parameter. Reads and edits start at the root every time; an edit reads and
/// stores the manifest once and posts one diff, no matter how deeply the parameter is nested. Links
/// are values, and a copy shares its parent links. Chains are walked and destroyed recursively, so
/// they should not exceed 512 links, the nesting limit of stored documents. Threads: as
/// HookManager.
class TAVLEN_API ParameterManager {
 public:
  virtual ~ParameterManager() = default;

  /// The edited tweak. Never null.
  virtual const std::shared_ptr<TweakFile>& tweak() const = 0;
  /// Reads the parameter. Throws what the link's class documents, and what its parent links throw.
  virtual Parameter parameter() const = 0;
  /// Replaces the parameter. Throws as parameter() and HookManager::setHook() do; nothing is then
  /// stored or posted.
  virtual void setParameter(Parameter parameter) const = 0;
  /// A copy, to be used as the parent of further links.
  virtual std::shared_ptr<const ParameterManager> shared() const = 0;

  /// Reads the parameter, lets `change` edit it and stores it. If `change` throws, the exception
  /// passes through and nothing is stored. Throws as parameter() and setParameter() do.
  virtual void updateParameter(FunctionRef<void(Parameter&)> change) const = 0;

  /// A manager of the same parameter that requires the kind `Kind`. Include TypedParameterManager.h
  /// to use it.
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
