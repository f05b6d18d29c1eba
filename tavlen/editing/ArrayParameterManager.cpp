#include "tavlen/editing/ArrayParameterManager.h"

#include <string>

namespace tavlen {

namespace {

/// The item at `index`. Throws Error::indexOutOfBounds.
ParameterContainer& itemAt(ArrayParameter& array, std::int64_t index) {
  if (index < 0 || static_cast<std::uint64_t>(index) >= array._items.size())
    throw ArrayParameterManager::Error::indexOutOfBounds(index);
  return array._items[static_cast<std::size_t>(index)];
}

}  // namespace

Parameter ArrayParameterManager::parameter() const {
  if (arrayIdx < 0) throw Error::indexOutOfBounds(arrayIdx);
  ArrayParameter array = parameterManager.parameter();
  return std::move(itemAt(array, arrayIdx).value);
}

void ArrayParameterManager::setParameter(Parameter parameter) const {
  parameterManager.updateParameter(
      [&](ArrayParameter& array) { itemAt(array, arrayIdx).value = std::move(parameter); });
}

void ArrayParameterManager::updateParameter(FunctionRef<void(Parameter&)> change) const {
  if (arrayIdx < 0) throw Error::indexOutOfBounds(arrayIdx);
  parameterManager.updateParameter(
      [&](ArrayParameter& array) { change(itemAt(array, arrayIdx).value); });
}

std::shared_ptr<const ParameterManager> ArrayParameterManager::shared() const {
  return std::make_shared<const ArrayParameterManager>(*this);
}

ArrayParameterManager::Error::Error(Case which, LocalizedText text, std::int64_t index)
    : CasedError(which, text, {std::to_string(index)}), index_(index) {}

ArrayParameterManager::Error ArrayParameterManager::Error::indexOutOfBounds(std::int64_t index) {
  return {Case::indexOutOfBounds,
          {"array_parameter_manager.error.index_out_of_bounds", "Index out of bounds: %d"},
          index};
}

}  // namespace tavlen
