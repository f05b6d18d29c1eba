#include "tavlen/foundation/base/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace tavlen {

void fatalError(std::string_view message) {
  (void)std::fprintf(stderr, "tavlen: fatal: %.*s\n", static_cast<int>(message.size()),
                     message.data());
  std::abort();
}

}  // namespace tavlen
