#pragma once

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/text/Log.h"

namespace tavlen {

/// Collects what any thread logs while it exists. There can be one at a time.
class LogLines {
 public:
  LogLines() {
    setLogSink([this](std::string_view message) {
      const std::lock_guard lock(lock_);
      lines_.emplace_back(message);
    });
  }
  LogLines(const LogLines&) = delete;
  LogLines& operator=(const LogLines&) = delete;
  ~LogLines() { setLogSink({}); }

  std::vector<std::string> take() {
    const std::lock_guard lock(lock_);
    return std::exchange(lines_, {});
  }
  long count(std::string_view text) const {
    const std::lock_guard lock(lock_);
    return std::count_if(lines_.begin(), lines_.end(), [&](const std::string& line) {
      return line.find(text) != std::string::npos;
    });
  }

 private:
  mutable std::mutex lock_;
  std::vector<std::string> lines_;
};

}  // namespace tavlen
