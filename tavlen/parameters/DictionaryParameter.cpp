#include "tavlen/parameters/DictionaryParameter.h"

#include <utility>

#include "tavlen/parameters/detail/ArrayLiteral.h"
#include "tavlen/parameters/detail/CollectionParameter.h"
#include "tavlen/parameters/detail/Rendering.h"

namespace tavlen {

static_assert(CollectionParameter<DictionaryParameter>);

DictionaryParameter DictionaryParameter::withItems(std::vector<Pair> items) {
  DictionaryParameter result;
  result.setItems(std::move(items));
  return result;
}

void DictionaryParameter::setItems(std::vector<Pair> items) { _items = std::move(items); }

void DictionaryParameter::appendOBJSValue(std::string& out) const {
  std::string keys;
  appendArrayLiteral(keys, _items,
                     [](const Pair& pair) -> const ParameterContainer& { return pair._key; });
  out += "[NSDictionary dictionaryWithObjects:";
  appendArrayLiteral(out, _items,
                     [](const Pair& pair) -> const ParameterContainer& { return pair._value; });
  out += " forKeys:";
  out += keys;
  out += ']';
}

std::string DictionaryParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
