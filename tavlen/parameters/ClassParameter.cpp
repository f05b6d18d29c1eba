#include "tavlen/parameters/ClassParameter.h"

#include "tavlen/parameters/detail/Rendering.h"
#include "tavlen/parameters/detail/RuntimeParameter.h"

namespace tavlen {

void ClassParameter::appendOBJSValue(std::string& out) const { appendRuntimeLookup(out, *this); }

std::string ClassParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
