#include "tavlen/parameters/DataParameter.h"

#include "tavlen/parameters/detail/FileParameter.h"
#include "tavlen/parameters/detail/Rendering.h"

namespace tavlen {

void DataParameter::appendOBJSValue(std::string& out) const { appendFileObject(out, *this); }

std::string DataParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
