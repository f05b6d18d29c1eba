#pragma once

#include <cstdint>

namespace tavlen {

class Progress;

/// Tells a Progress of bytes as they are worked on, in steps that cost nothing beside the work.
class ByteProgress {
 public:
  /// `progress` may be none. Its units become `total` bytes.
  ByteProgress(Progress* progress, std::uint64_t total);

  /// Throws std::system_error (ECANCELED) once the progress is cancelled.
  void add(std::uint64_t bytes);
  /// All is done, whatever was counted.
  void finish();

 private:
  Progress* progress_;
  std::uint64_t total_;
  std::uint64_t done_ = 0;
  std::uint64_t told_ = 0;
};

}  // namespace tavlen
