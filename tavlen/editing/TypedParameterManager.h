#pragma once

#include <memory>
#include <utility>
#include <variant>

#include "tavlen/editing/ParameterError.h"
#include "tavlen/editing/ParameterManager.h"
#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen {

/// A manager that requires its parameter to be of the kind `Kind`. A value.
template <class Kind>
class TypedParameterManager {
 public:
  /// `untyped` must not be null.
  explicit TypedParameterManager(std::shared_ptr<const ParameterManager> untyped)
      : untyped_(std::move(untyped)) {}

  /// The wrapped manager.
  const ParameterManager& untyped() const { return *untyped_; }
  /// The edited tweak. Never null.
  const std::shared_ptr<TweakFile>& tweak() const { return untyped_->tweak(); }

  /// Reads the parameter. Throws ParameterError::typeMismatch if it is of another kind.
  Kind parameter() const {
    Parameter found = untyped_->parameter();
    if (Kind* kind = std::get_if<Kind>(&found)) return std::move(*kind);
    throw ParameterError::typeMismatch(Kind::typeName, found);
  }
  /// Replaces the parameter, even if it is of another kind.
  void setParameter(Kind parameter) const { untyped_->setParameter(std::move(parameter)); }
  /// Reads the parameter, lets `change` edit it and stores it. If `change` throws, the exception
  /// passes through and nothing is stored. Throws as parameter() and setParameter() do.
  void updateParameter(FunctionRef<void(Kind&)> change) const {
    untyped_->updateParameter([&](Parameter& found) {
      Kind* const kind = std::get_if<Kind>(&found);
      if (kind == nullptr) throw ParameterError::typeMismatch(Kind::typeName, found);
      change(*kind);
    });
  }

 private:
  std::shared_ptr<const ParameterManager> untyped_;
};

template <class Kind>
TypedParameterManager<Kind> ParameterManager::typed() const {
  return TypedParameterManager<Kind>(shared());
}

}  // namespace tavlen
