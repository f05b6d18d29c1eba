#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "tavlen/editing/HookManager.h"
#include "tavlen/editing/ParameterManager.h"

namespace tavlen {

/// The first link of a chain: what a hook puts in place of one argument, or of its result.
class RootParameterManager final : public ParameterManager {
 public:
  /// `idx` is the position in the hook's arguments as Hook numbers them.
  RootParameterManager(HookManager manager, std::int64_t idx)
      : hookManager(std::move(manager)), parameterIdx(idx) {}

  HookManager hookManager;
  std::int64_t parameterIdx;

  const std::shared_ptr<TweakFile>& tweak() const override { return hookManager.tweak; }
  /// Throws as HookManager::hook(), and ParameterError::notFound where the hook leaves the argument
  /// as it is.
  Parameter parameter() const override;
  /// Adds the argument where the hook has none there. Throws as HookManager::hook().
  void setParameter(Parameter parameter) const override;
  void updateParameter(FunctionRef<void(Parameter&)> change) const override;
  std::shared_ptr<const ParameterManager> shared() const override;
};

}  // namespace tavlen
