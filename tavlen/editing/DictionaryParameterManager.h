#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "tavlen/editing/TypedParameterManager.h"
#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

/// The link to the key or the value of one pair of a dictionary.
///
/// To insert, remove or move pairs, edit the dictionary itself through its own manager.
class TAVLEN_API DictionaryParameterManager final : public ParameterManager {
 public:
  /// The cases of Error.
  enum class ErrorCase { pairIndexOutOfBounds };
  class Error;
  /// A side of a pair.
  enum class Accessor { key, value };

  /// `manager` is the parent link, which leads to the dictionary; `idx` is the pair's index.
  DictionaryParameterManager(TypedParameterManager<DictionaryParameter> manager, std::int64_t idx,
                             Accessor side)
      : parameterManager(std::move(manager)), pairIdx(idx), accessor(side) {}

  /// Leads to the dictionary.
  TypedParameterManager<DictionaryParameter> parameterManager;
  /// The pair's index in the dictionary.
  std::int64_t pairIdx;
  /// The side of the pair.
  Accessor accessor;

  const std::shared_ptr<TweakFile>& tweak() const override { return parameterManager.tweak(); }
  /// Throws Error::pairIndexOutOfBounds; for a negative index without reading anything.
  Parameter parameter() const override;
  /// Throws Error::pairIndexOutOfBounds after reading the dictionary.
  void setParameter(Parameter parameter) const override;
  void updateParameter(FunctionRef<void(Parameter&)> change) const override;
  std::shared_ptr<const ParameterManager> shared() const override;
};

/// A pair that does not exist. Its message is that of ArrayParameterManager::Error.
class TAVLEN_API DictionaryParameterManager::Error
    : public CasedError<DictionaryParameterManager::ErrorCase> {
 public:
  /// The dictionary has no pair at `index`.
  static Error pairIndexOutOfBounds(std::int64_t index);

  /// The index.
  std::int64_t index() const { return index_; }

 private:
  Error(Case which, LocalizedText text, std::int64_t index);

  std::int64_t index_;
};

}  // namespace tavlen
