#include "tavlen/introspection/classes/MethodIdentity.h"

namespace tavlen {

std::optional<MethodIdentity> methodNamed(std::string_view text) {
  const bool isClassMethod = text.starts_with("+[");
  if ((!isClassMethod && !text.starts_with("-[")) || !text.ends_with(']')) return std::nullopt;
  text = text.substr(2, text.size() - 3);
  const std::size_t blank = text.rfind(' ');
  if (blank == std::string_view::npos || blank == 0 || blank + 1 == text.size()) {
    return std::nullopt;
  }
  return MethodIdentity{std::string(text.substr(0, blank)), std::string(text.substr(blank + 1)),
                        isClassMethod};
}

}  // namespace tavlen
