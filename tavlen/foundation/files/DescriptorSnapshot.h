#pragma once

#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The descriptors that this process has open, to tell them from those of a library that it loads
/// later and that opens some without close-on-exec. Threads: any.
class TAVLEN_API DescriptorSnapshot {
 public:
  DescriptorSnapshot();

  /// Makes each descriptor that was opened since close-on-exec. Does nothing where the system does
  /// not list them.
  void hideOthers() const;

 private:
  std::vector<int> open_;  ///< sorted
};

}  // namespace tavlen
