#include "tavlen/parameters/SelectorParameter.h"

#include "tavlen/parameters/detail/Rendering.h"
#include "tavlen/parameters/detail/RuntimeParameter.h"

namespace tavlen {

void SelectorParameter::appendOBJSValue(std::string& out) const { appendRuntimeLookup(out, *this); }

std::string SelectorParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
