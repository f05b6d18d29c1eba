#include "tavlen/parameters/ColorParameter.h"

#include "tavlen/foundation/text/NumberText.h"
#include "tavlen/parameters/detail/Rendering.h"

namespace tavlen {

void ColorParameter::appendOBJSValue(std::string& out) const {
  out += "[UIColor colorWithRed:";
  appendDescription(out, red);
  out += " green:";
  appendDescription(out, green);
  out += " blue:";
  appendDescription(out, blue);
  out += " alpha:";
  appendDescription(out, alpha);
  out += "]";
}

std::string ColorParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
