#pragma once

#include <string>

namespace tavlen {

/// `parameter`'s expression as a text of its own.
template <class Kind>
std::string renderedOBJSValue(const Kind& parameter) {
  std::string out;
  parameter.appendOBJSValue(out);
  return out;
}

}  // namespace tavlen
