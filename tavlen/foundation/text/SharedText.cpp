#include "tavlen/foundation/text/SharedText.h"

#include <algorithm>

namespace tavlen {

SharedText::SharedText(std::string_view text) : size_(text.size()) {
  if (text.empty()) return;
  // NOLINTNEXTLINE(modernize-avoid-c-arrays): of a size that only the run tells.
  const auto bytes = std::make_shared_for_overwrite<char[]>(text.size());
  std::copy(text.begin(), text.end(), bytes.get());
  bytes_ = std::shared_ptr<const char>(bytes, bytes.get());
}

}  // namespace tavlen
