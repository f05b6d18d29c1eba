#include "tavlen/parameters/Parameter.h"

#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

void appendOBJSValue(std::string& out, const Parameter& parameter) {
  std::visit([&](const ParameterKind auto& kind) { kind.appendOBJSValue(out); }, parameter);
}

std::string objsValue(const Parameter& parameter) {
  std::string out;
  appendOBJSValue(out, parameter);
  return out;
}

}  // namespace tavlen
