#include "tavlen/foundation/base/DescribedError.h"

namespace tavlen {

const char* DescribedError::what() const noexcept {
  try {
    what_ = description();
    return what_.c_str();
  } catch (...) {
    return "an error whose description could not be made";  // out of memory
  }
}

}  // namespace tavlen
