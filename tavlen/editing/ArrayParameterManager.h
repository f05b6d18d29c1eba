#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "tavlen/editing/TypedParameterManager.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

/// The link to one item of an array.
///
/// To insert, remove or move items, edit the array itself through its own manager.
class TAVLEN_API ArrayParameterManager final : public ParameterManager {
 public:
  /// The cases of Error.
  enum class ErrorCase { indexOutOfBounds };
  class Error;

  /// `manager` is the parent link, which leads to the array; `idx` is the item's index.
  ArrayParameterManager(TypedParameterManager<ArrayParameter> manager, std::int64_t idx)
      : parameterManager(std::move(manager)), arrayIdx(idx) {}

  /// Leads to the array.
  TypedParameterManager<ArrayParameter> parameterManager;
  /// The item's index in the array.
  std::int64_t arrayIdx;

  const std::shared_ptr<TweakFile>& tweak() const override { return parameterManager.tweak(); }
  /// Throws Error::indexOutOfBounds; for a negative index without reading anything.
  Parameter parameter() const override;
  /// Throws Error::indexOutOfBounds after reading the array.
  void setParameter(Parameter parameter) const override;
  void updateParameter(FunctionRef<void(Parameter&)> change) const override;
  std::shared_ptr<const ParameterManager> shared() const override;
};

/// An item that does not exist.
class TAVLEN_API ArrayParameterManager::Error
    : public CasedError<ArrayParameterManager::ErrorCase> {
 public:
  /// The array has no item at `index`.
  static Error indexOutOfBounds(std::int64_t index);

  /// The index.
  std::int64_t index() const { return index_; }

 private:
  Error(Case which, LocalizedText text, std::int64_t index);

  std::int64_t index_;
};

}  // namespace tavlen
