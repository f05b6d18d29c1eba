#pragma once

#include <array>
#include <csignal>

namespace tavlen::cli {

/// Lets a command that works until it is told to end do so in order. While it lives, SIGINT and
/// SIGTERM, unless they were ignored, close the other side of descriptor(), and SIGPIPE is an error
/// of the write. One at a time.
class EndSignals {
 public:
  /// Throws std::system_error.
  EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;
  ~EndSignals();

  int descriptor() const { return descriptor_; }

 private:
  int descriptor_ = -1;
  std::array<struct sigaction, 3> former_{};
};

}  // namespace tavlen::cli
