#pragma once

#include <cstdint>

namespace tavlen {

class Progress;

/// Reports processed bytes to a Progress, in steps large enough to cost nothing. Threads: as for
/// Progress; one object one thread at a time.
class ByteProgress {
 public:
  /// `progress` may be null. Its total becomes `total` bytes.
  ByteProgress(Progress* progress, std::uint64_t total);

  /// Adds processed bytes. Throws std::system_error (ECANCELED) once the progress is cancelled.
  void add(std::uint64_t bytes);
  /// Completes the progress, whatever was counted.
  void finish();

 private:
  Progress* progress_;
  std::uint64_t total_;
  std::uint64_t done_ = 0;
  std::uint64_t told_ = 0;
};

}  // namespace tavlen
