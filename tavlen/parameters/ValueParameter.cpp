#include "tavlen/parameters/ValueParameter.h"

#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/parameters/detail/Rendering.h"

namespace tavlen {

template <class Value>
void ValueParameter<Value>::appendOBJSValue(std::string& out) const {
  appendJSON(out, value);
}

template <class Value>
std::string ValueParameter<Value>::objsValue() const {
  return renderedOBJSValue(*this);
}

template struct ValueParameter<std::int64_t>;
template struct ValueParameter<std::uint64_t>;
template struct ValueParameter<double>;
template struct ValueParameter<std::string>;
template struct ValueParameter<bool>;

}  // namespace tavlen
