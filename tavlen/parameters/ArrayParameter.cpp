#include "tavlen/parameters/ArrayParameter.h"

#include <utility>

#include "tavlen/parameters/detail/ArrayLiteral.h"
#include "tavlen/parameters/detail/CollectionParameter.h"
#include "tavlen/parameters/detail/Rendering.h"

namespace tavlen {

static_assert(CollectionParameter<ArrayParameter>);

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

void ArrayParameter::appendOBJSValue(std::string& out) const {
  appendArrayLiteral(out, _items, [](const ParameterContainer& item) -> const ParameterContainer& {
    return item;
  });
}

std::string ArrayParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
