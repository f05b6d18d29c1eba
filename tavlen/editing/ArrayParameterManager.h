#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "tavlen/editing/TypedParameterManager.h"
#include "tavlen/foundation/errors/LocalizedError.h"

namespace tavlen {

/// The link that leads to an item of an array.
///
/// Items are inserted, removed and moved through the array itself: read it through its manager,
/// change its items, set it.
class ArrayParameterManager final : public ParameterManager {
 public:
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
  std::shared_ptr<const ParameterManager> shared() const override;
};

class ArrayParameterManager::Error : public LocalizedError {
 public:
  enum class Case { indexOutOfBounds };

  static Error indexOutOfBounds(std::int64_t index);

  Case which() const { return case_; }
  std::int64_t index() const { return index_; }
  bool operator==(const Error& other) const {
    return case_ == other.case_ && index_ == other.index_;
  }

 private:
  Error(Case which, LocalizedText text, std::int64_t index);

  Case case_;
  std::int64_t index_;
};

}  // namespace tavlen
