#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "tavlen/editing/TypedParameterManager.h"
#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

/// The link that leads to the key or the value of a dictionary's pair.
///
/// Pairs are inserted, removed and moved through the dictionary itself: read it through its
/// manager, change its items, set it.
class DictionaryParameterManager final : public ParameterManager {
 public:
  enum class ErrorCase { pairIndexOutOfBounds };
  class Error;
  /// The side of the pair.
  enum class Accessor { key, value };

  DictionaryParameterManager(TypedParameterManager<DictionaryParameter> manager, std::int64_t idx,
                             Accessor side)
      : parameterManager(std::move(manager)), pairIdx(idx), accessor(side) {}

  /// Leads to the dictionary.
  TypedParameterManager<DictionaryParameter> parameterManager;
  std::int64_t pairIdx;
  Accessor accessor;

  const std::shared_ptr<TweakFile>& tweak() const override { return parameterManager.tweak(); }
  /// Throws Error::pairIndexOutOfBounds, for a negative index before anything is read.
  Parameter parameter() const override;
  /// Throws Error::pairIndexOutOfBounds once the dictionary is read.
  void setParameter(Parameter parameter) const override;
  void updateParameter(FunctionRef<void(Parameter&)> change) const override;
  std::shared_ptr<const ParameterManager> shared() const override;
};

/// Has the array's key and text.
class DictionaryParameterManager::Error : public CasedError<DictionaryParameterManager::ErrorCase> {
 public:
  static Error pairIndexOutOfBounds(std::int64_t index);

  std::int64_t index() const { return index_; }

 private:
  Error(Case which, LocalizedText text, std::int64_t index);

  std::int64_t index_;
};

}  // namespace tavlen
