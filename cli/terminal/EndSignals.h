#pragma once

#include <array>
#include <csignal>

namespace tavlen::cli {

/// Lets a long-running command end cleanly on SIGHUP, SIGINT and SIGTERM (RAII). Each of them,
/// unless it was ignored before, closes the write end of the pipe whose read end is descriptor().
/// SIGPIPE is ignored, so that writing fails with EPIPE. Only one object may exist at a time.
class EndSignals {
 public:
  /// Installs the signal handlers. Throws std::system_error.
  EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;
  ~EndSignals();

  /// Becomes readable (end of file) after a signal. Valid as long as this object.
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_ = -1;
  std::array<struct sigaction, 4> former_{};
};

}  // namespace tavlen::cli
