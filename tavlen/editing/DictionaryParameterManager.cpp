#include "tavlen/editing/DictionaryParameterManager.h"

#include <string>

namespace tavlen {

namespace {

/// The box on one side of the pair at `index`. Throws Error::pairIndexOutOfBounds.
ParameterContainer& boxAt(DictionaryParameter& dictionary, std::int64_t index,
                          DictionaryParameterManager::Accessor accessor) {
  if (index < 0 || static_cast<std::uint64_t>(index) >= dictionary._items.size())
    throw DictionaryParameterManager::Error::pairIndexOutOfBounds(index);
  DictionaryParameter::Pair& pair = dictionary._items[static_cast<std::size_t>(index)];
  return accessor == DictionaryParameterManager::Accessor::key ? pair._key : pair._value;
}

}  // namespace

Parameter DictionaryParameterManager::parameter() const {
  if (pairIdx < 0) throw Error::pairIndexOutOfBounds(pairIdx);
  DictionaryParameter dictionary = parameterManager.parameter();
  return std::move(boxAt(dictionary, pairIdx, accessor).value);
}

void DictionaryParameterManager::setParameter(Parameter parameter) const {
  parameterManager.updateParameter([&](DictionaryParameter& dictionary) {
    boxAt(dictionary, pairIdx, accessor).value = std::move(parameter);
  });
}

void DictionaryParameterManager::updateParameter(FunctionRef<void(Parameter&)> change) const {
  if (pairIdx < 0) throw Error::pairIndexOutOfBounds(pairIdx);
  parameterManager.updateParameter(
      [&](DictionaryParameter& dictionary) { change(boxAt(dictionary, pairIdx, accessor).value); });
}

std::shared_ptr<const ParameterManager> DictionaryParameterManager::shared() const {
  return std::make_shared<const DictionaryParameterManager>(*this);
}

DictionaryParameterManager::Error::Error(Case which, LocalizedText text, std::int64_t index)
    : CasedError(which, text, {std::to_string(index)}), index_(index) {}

DictionaryParameterManager::Error DictionaryParameterManager::Error::pairIndexOutOfBounds(
    std::int64_t index) {
  return {Case::pairIndexOutOfBounds,
          {"array_parameter_manager.error.index_out_of_bounds", "Index out of bounds: %d"},
          index};
}

}  // namespace tavlen
