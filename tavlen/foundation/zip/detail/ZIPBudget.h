#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "tavlen/foundation/zip/ZIPArchive.h"

namespace tavlen {

/// Checks the bytes extracted from an archive against its limits.
class ZIPBudget {
 public:
  static constexpr std::uint64_t kUnknown = std::numeric_limits<std::uint64_t>::max();

  /// `compressedBytes` is the sum of all entries. While it is unknown, the ratio is not checked.
  explicit ZIPBudget(const ZIPArchive::Limits& limits, std::uint64_t compressedBytes = kUnknown)
      : limits_(limits), compressedBytes_(compressedBytes) {}

  /// Throws ZIPError with `name`: entryTooLarge, archiveTooLarge, ratioTooHigh.
  void add(const std::string& name, std::uint64_t bytes);

  /// The bytes so far.
  std::uint64_t bytes() const { return bytes_; }

 private:
  ZIPArchive::Limits limits_;
  std::uint64_t compressedBytes_;
  std::uint64_t bytes_ = 0;
};

}  // namespace tavlen
