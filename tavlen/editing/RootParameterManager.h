#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "tavlen/editing/HookManager.h"
#include "tavlen/editing/ParameterManager.h"
#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The first link of a chain: the parameter with which a hook replaces one argument, or its result.
class TAVLEN_API RootParameterManager final : public ParameterManager {
 public:
  /// `idx` is an index as in Hook: an argument, or Hook::kReturnValue.
  RootParameterManager(HookManager manager, std::int64_t idx)
      : hookManager(std::move(manager)), parameterIdx(idx) {}

  /// Leads to the hook.
  HookManager hookManager;
  /// An index as in Hook.
  std::int64_t parameterIdx;

  const std::shared_ptr<TweakFile>& tweak() const override { return hookManager.tweak; }
  /// Throws as HookManager::hook() does, and ParameterError::notFound if the hook does not replace
  /// the argument.
  Parameter parameter() const override;
  /// Replaces or adds the entry for the argument. Throws as HookManager::hook() does.
  void setParameter(Parameter parameter) const override;
  void updateParameter(FunctionRef<void(Parameter&)> change) const override;
  std::shared_ptr<const ParameterManager> shared() const override;
};

}  // namespace tavlen
