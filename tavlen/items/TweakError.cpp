#include "tavlen/items/TweakError.h"

#include <utility>

namespace tavlen {

TweakError TweakError::missing(std::string item) {
  return {Case::missing, {"tweak_error.missing", "Missing %@"}, {std::move(item)}};
}

TweakError TweakError::bundleIDMismatch(std::string expected, std::string found) {
  return {Case::bundleIDMismatch,
          {"tweak_error.bundle_id_mismatch", "Bundle ID mismatch (expected '%@' but found '%@')"},
          {std::move(expected), std::move(found)}};
}

TweakError TweakError::notFound() {
  return {Case::notFound, {"tweak_error.not_found", "Not found"}};
}

}  // namespace tavlen
