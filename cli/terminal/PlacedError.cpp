#include "cli/terminal/PlacedError.h"

#include <utility>

namespace tavlen::cli {

PlacedError::PlacedError(Diagnostic diagnostic)
    : std::runtime_error(placeText(diagnostic) + ": " + diagnostic.message),
      diagnostic_(std::move(diagnostic)) {}

}  // namespace tavlen::cli
