#include "tavlen/parameters/URLParameter.h"

#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/parameters/detail/Rendering.h"

namespace tavlen {

void URLParameter::appendOBJSValue(std::string& out) const {
  out += "[NSURL URLWithString:";
  appendJSONString(out, string);
  out += "]";
}

std::string URLParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
