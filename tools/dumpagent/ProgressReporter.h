#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "dumpagent/ReportSender.h"
#include "tavlen/foundation/tasks/Progress.h"

namespace tavlen::dumpagent {

/// Sends a report whenever a progress has advanced by a step, and a last one on destruction.
class ProgressReporter {
 public:
  /// Starts a thread that reports. `progress` must not be null; `sender` must outlive the object.
  ProgressReporter(std::shared_ptr<Progress> progress, const ReportSender& sender);
  ProgressReporter(const ProgressReporter&) = delete;
  ProgressReporter& operator=(const ProgressReporter&) = delete;
  ~ProgressReporter();

 private:
  void run();

  std::shared_ptr<Progress> progress_;
  const ReportSender& sender_;
  std::mutex lock_;
  std::condition_variable changed_;
  bool isOver_ = false;
  std::thread thread_;  // last, because it uses the other members as soon as it starts
};

}  // namespace tavlen::dumpagent
