#include "tavlen/parameters/CodeParameter.h"

#include "tavlen/parameters/detail/Rendering.h"

namespace tavlen {

void CodeParameter::appendOBJSValue(std::string& out) const { out += code; }

std::string CodeParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
