#include "tavlen/parameters/ImageParameter.h"

#include "tavlen/parameters/detail/FileParameter.h"
#include "tavlen/parameters/detail/Rendering.h"

namespace tavlen {

void ImageParameter::appendOBJSValue(std::string& out) const { appendFileObject(out, *this); }

std::string ImageParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
