#pragma once

#include <optional>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The descriptors that this process has open, to tell them from those of a library that it loads
/// later and that opens some without close-on-exec. Threads: any; a descriptor that another thread
/// opens in between counts as the library's.
class TAVLEN_API DescriptorSnapshot {
 public:
  /// Throws std::bad_alloc.
  DescriptorSnapshot();

  /// Marks the descriptors that were opened since then as close-on-exec. Does nothing if the system
  /// could not list them then, or cannot now. Throws std::bad_alloc.
  void hideOthers() const;

 private:
  std::optional<std::vector<int>> open_;  ///< sorted; nothing if the system did not list them
};

}  // namespace tavlen
