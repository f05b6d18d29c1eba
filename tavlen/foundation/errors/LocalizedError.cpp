#include "tavlen/foundation/errors/LocalizedError.h"

#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/foundation/errors/Placeholders.h"

namespace tavlen {

std::string LocalizedError::description() const {
  return fillPlaceholders(MainBundle::localizedString(text_), payload_);
}

const char* LocalizedError::what() const noexcept {
  try {
    what_ = description();
    return what_.c_str();
  } catch (...) {
    return "an error whose description could not be made";  // out of memory
  }
}

}  // namespace tavlen
