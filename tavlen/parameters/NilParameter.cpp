#include "tavlen/parameters/NilParameter.h"

#include "tavlen/parameters/detail/Rendering.h"

namespace tavlen {

void NilParameter::appendOBJSValue(std::string& out) const { out += "null"; }

std::string NilParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
