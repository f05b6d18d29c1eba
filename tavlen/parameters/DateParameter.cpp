#include "tavlen/parameters/DateParameter.h"

#include "tavlen/foundation/text/NumberText.h"
#include "tavlen/parameters/detail/Rendering.h"

namespace tavlen {

void DateParameter::appendOBJSValue(std::string& out) const {
  out += "[NSDate dateWithTimeIntervalSince1970:";
  appendDescription(out, date.secondsSince1970());
  out += "]";
}

std::string DateParameter::objsValue() const { return renderedOBJSValue(*this); }

}  // namespace tavlen
