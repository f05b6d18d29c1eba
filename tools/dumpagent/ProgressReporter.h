#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "dumpagent/ReportSender.h"
#include "tavlen/foundation/tasks/Progress.h"

namespace tavlen::dumpagent {

/// Reports how far a progress is whenever it has come further by a step, until the object is gone;
/// then a last time.
class ProgressReporter {
 public:
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
  std::thread thread_;  // the last member: it uses the others from its start
};

}  // namespace tavlen::dumpagent
