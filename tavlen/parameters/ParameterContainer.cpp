#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

std::span<const std::string_view> ParameterContainer::supportedTypes() {
  return TypeKeyedFamily<Parameter>::kIdentifiers;
}

}  // namespace tavlen
