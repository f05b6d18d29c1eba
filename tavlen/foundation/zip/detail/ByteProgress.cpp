#include "tavlen/foundation/zip/detail/ByteProgress.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "tavlen/foundation/tasks/Progress.h"

namespace tavlen {

namespace {

constexpr std::uint64_t kStep = std::uint64_t{256} << 10;

}  // namespace

ByteProgress::ByteProgress(Progress* progress, std::uint64_t total)
    : progress_(progress), total_(total) {
  if (progress_ == nullptr) return;
  progress_->setTotalUnitCount(static_cast<std::int64_t>(total));
  progress_->setCompletedUnitCount(0);
}

void ByteProgress::add(std::uint64_t bytes) {
  done_ += bytes;
  if (progress_ == nullptr || (bytes != 0 && done_ - told_ < kStep)) return;
  if (progress_->isCancelled()) throw std::system_error(ECANCELED, std::generic_category());
  told_ = done_;
  // Keep the last unit for finish(): until then the work may still fail.
  const std::uint64_t most = total_ == 0 ? 0 : total_ - 1;
  progress_->setCompletedUnitCount(static_cast<std::int64_t>(std::min(done_, most)));
}

void ByteProgress::finish() {
  if (progress_ == nullptr) return;
  progress_->setCompletedUnitCount(static_cast<std::int64_t>(std::max<std::uint64_t>(total_, 1)));
}

}  // namespace tavlen
