#pragma once

#include <pthread.h>

#include <chrono>

namespace tavlen::loader {

/// The processor time of the thread that makes it.
///
/// Threads: any, as long as that thread lives.
class ProcessorTime {
 public:
  /// What the thread has used since it was started; zero if the system does not tell.
  std::chrono::nanoseconds used() const;

 private:
  pthread_t thread_ = ::pthread_self();
};

}  // namespace tavlen::loader
