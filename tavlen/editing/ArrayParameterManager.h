#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "tavlen/editing/TypedParameterManager.h"
#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

/// The link that leads to an item of an array.
///
/// Items are inserted, removed and moved through the array itself: read it through its manager,
/// change its items, set it.
class ArrayParameterManager final : public ParameterManager {
 public:
  enum class ErrorCase { indexOutOfBounds };
  class Error;

  ArrayParameterManager(TypedParameterManager<ArrayParameter> manager, std::int64_t idx)
      : parameterManager(std::move(manager)), arrayIdx(idx) {}

  /// Leads to the array.
  TypedParameterManager<ArrayParameter> parameterManager;
  std::int64_t arrayIdx;

  const std::shared_ptr<TweakFile>& tweak() const override { return parameterManager.tweak(); }
  /// Throws Error::indexOutOfBounds, for a negative index before anything is read.
  Parameter parameter() const override;
  /// Throws Error::indexOutOfBounds once the array is read.
  void setParameter(Parameter parameter) const override;
  void updateParameter(FunctionRef<void(Parameter&)> change) const override;
  std::shared_ptr<const ParameterManager> shared() const override;
};

class ArrayParameterManager::Error : public CasedError<ArrayParameterManager::ErrorCase> {
 public:
  static Error indexOutOfBounds(std::int64_t index);

  std::int64_t index() const { return index_; }

 private:
  Error(Case which, LocalizedText text, std::int64_t index);

  std::int64_t index_;
};

}  // namespace tavlen
