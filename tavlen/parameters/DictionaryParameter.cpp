#include "tavlen/parameters/DictionaryParameter.h"

#include "tavlen/parameters/ArrayLiteral.h"
#include "tavlen/parameters/Rendering.h"

namespace tavlen {

void DictionaryParameter::appendOBJSValue(std::string& out) const {
  std::string keys;
  appendArrayLiteral(keys, items,
                     [](const Pair& pair) -> const ParameterContainer& { return pair._key; });
  out += "[NSDictionary dictionaryWithObjects:";
  appendArrayLiteral(out, items,
                     [](const Pair& pair) -> const ParameterContainer& { return pair._value; });
  out += " forKeys:";
  out += keys;
  out += ']';
}

std::string DictionaryParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
