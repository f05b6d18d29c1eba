#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "cli/terminal/EndSignals.h"
#include "tavlen/foundation/tasks/Progress.h"

namespace tavlen::cli {

/// While it lives, shows on the standard error stream, as a bar and a percentage, how far a piece
/// of work is, from a thread of its own. Nothing where that stream is no terminal, or where the
/// work takes no time. SIGINT and SIGTERM cancel the work meanwhile, so that it takes away what it
/// has begun.
class ProgressLine {
 public:
  /// `work` stands before the bar, as in "exporting A".
  explicit ProgressLine(const std::string& work);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine();

  /// What the work is to report to.
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
  bool isShown_ = false;   ///< the thread's own
  std::thread thread_;
};

}  // namespace tavlen::cli
