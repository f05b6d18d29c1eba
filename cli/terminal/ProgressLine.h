#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "cli/terminal/EndSignals.h"
#include "tavlen/foundation/tasks/Progress.h"

namespace tavlen::cli {

/// Shows a progress bar and a percentage on the standard error stream during its lifetime, from a
/// separate thread. Shows nothing if the stream is not a terminal or if the work is quick. SIGINT
/// and SIGTERM cancel the progress, so that the work can clean up.
class ProgressLine {
 public:
  /// `work` is the text before the bar, such as "exporting A".
  explicit ProgressLine(const std::string& work);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine();

  /// The progress for the work to report to. Never null.
  const std::shared_ptr<Progress>& progress() const { return progress_; }

 private:
  void show();

  void print();

  std::string work_;
  EndSignals signals_;
  std::shared_ptr<Progress> progress_ = Progress::discrete(0);
  std::mutex lock_;
  std::condition_variable end_;
  bool hasEnded_ = false;  ///< guarded by lock_
  bool isShown_ = false;   ///< used only by the thread
  std::thread thread_;
};

}  // namespace tavlen::cli
