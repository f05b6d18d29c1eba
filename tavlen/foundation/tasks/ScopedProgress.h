#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/tasks/Progress.h"

namespace tavlen {

/// RAII: makes a progress the thread's current one while the object lives, even if an exception
/// ends the scope. Destroy it on the same thread.
class TAVLEN_API ScopedProgress {
 public:
  /// `progress` is not null.
  ScopedProgress(std::shared_ptr<Progress> progress, std::int64_t pendingUnitCount)
      : progress_(std::move(progress)) {
    progress_->becomeCurrent(pendingUnitCount);
  }
  ScopedProgress(const ScopedProgress&) = delete;
  ScopedProgress& operator=(const ScopedProgress&) = delete;
  ~ScopedProgress() { progress_->resignCurrent(); }

 private:
  std::shared_ptr<Progress> progress_;
};

}  // namespace tavlen
