#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "tavlen/foundation/tasks/Progress.h"

namespace tavlen::cli {

/// A limit on the time of a piece of work; none if absent.
using OptionalLimit = std::optional<std::chrono::milliseconds>;

/// What is wrong with work that took longer than its limit: "took longer than 2.5 s".
std::string overrunText(std::chrono::milliseconds limit);

/// Cancels a progress when the object has lived as long as a limit (RAII).
class TimeLimit {
 public:
  /// `progress` must outlive the object. Throws std::system_error if no thread can be started.
  TimeLimit(Progress& progress, OptionalLimit limit);
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;
  ~TimeLimit();

  /// Whether the limit has cancelled the progress.
  bool isOverrun();

 private:
  void watch(Progress& progress);

  OptionalLimit limit_;
  std::mutex lock_;
  std::condition_variable end_;
  bool hasEnded_ = false;   ///< guarded by lock_
  bool isOverrun_ = false;  ///< guarded by lock_
  std::thread thread_;      // last, because it uses the other members as soon as it starts
};

}  // namespace tavlen::cli
