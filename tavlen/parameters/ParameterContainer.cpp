#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

ArrayParameter ArrayParameter::withItems(std::vector<Parameter> items) {
  ArrayParameter result;
  result.setItems(std::move(items));
  return result;
}

std::vector<Parameter> ArrayParameter::items() const {
  std::vector<Parameter> result;
  result.reserve(_items.size());
  for (const ParameterContainer& item : _items) result.push_back(item.value);
  return result;
}

void ArrayParameter::setItems(std::vector<Parameter> items) {
  _items.clear();
  _items.reserve(items.size());
  for (Parameter& item : items) _items.push_back({std::move(item)});
}

DictionaryParameter DictionaryParameter::withItems(std::vector<Pair> items) {
  return {std::move(items)};
}

void DictionaryParameter::setItems(std::vector<Pair> items) { _items = std::move(items); }

std::span<const std::string_view> ParameterContainer::supportedTypes() {
  return TypeKeyedFamily<Parameter>::kIdentifiers;
}

}  // namespace tavlen
