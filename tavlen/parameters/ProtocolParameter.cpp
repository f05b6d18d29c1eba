#include "tavlen/parameters/ProtocolParameter.h"

#include "tavlen/parameters/detail/Rendering.h"
#include "tavlen/parameters/detail/RuntimeParameter.h"

namespace tavlen {

void ProtocolParameter::appendOBJSValue(std::string& out) const { appendRuntimeLookup(out, *this); }

std::string ProtocolParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
