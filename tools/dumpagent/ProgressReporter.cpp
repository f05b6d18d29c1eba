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
  // Progress has no change notification, so it is polled.
  constexpr std::chrono::milliseconds kInterval(2);
  // Few enough reports to fit into the receiver's buffer; otherwise the final one could be dropped.
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
