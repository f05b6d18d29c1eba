#include "dumpagent/ProgressReporter.h"

#include <chrono>
#include <utility>

namespace tavlen::dumpagent {

ProgressReporter::ProgressReporter(std::shared_ptr<Progress> progress, const ReportSender& sender)
    : progress_(std::move(progress)), sender_(sender), thread_([this] { run(); }) {}

ProgressReporter::~ProgressReporter() {
  {
    const std::lock_guard lock(lock_);
    isOver_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void ProgressReporter::run() {
  // A progress tells nobody of its changes.
  constexpr std::chrono::milliseconds kInterval(2);
  // Fewer reports than fit into the receiver's buffer: where it is full, the final one gets lost.
  constexpr double kStep = 1.0 / 200;
  double reported = -1;
  std::unique_lock lock(lock_);
  for (;;) {
    const bool isLast = isOver_;
    const double fraction = progress_->fractionCompleted();
    if (fraction - reported >= kStep || (isLast && fraction != reported)) {
      sender_.send({.value = fraction, .path = {}});
      reported = fraction;
    }
    if (isLast) return;
    changed_.wait_for(lock, kInterval, [this] { return isOver_; });
  }
}

}  // namespace tavlen::dumpagent
