#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "tavlen/foundation/zip/ZIPArchive.h"

namespace tavlen {

/// Counts the bytes that come out of an archive, against its limits.
class ZIPBudget {
 public:
  static constexpr std::uint64_t kUnknown = std::numeric_limits<std::uint64_t>::max();

  /// `compressedBytes` are those of all entries; the ratio is not looked at while they are unknown.
  explicit ZIPBudget(const ZIPArchive::Limits& limits, std::uint64_t compressedBytes = kUnknown)
      : limits_(limits), compressedBytes_(compressedBytes) {}

  /// Throws ZIPError with the name: entryTooLarge, archiveTooLarge, ratioTooHigh.
  void add(const std::string& name, std::uint64_t bytes);

  std::uint64_t bytes() const { return bytes_; }

 private:
  ZIPArchive::Limits limits_;
  std::uint64_t compressedBytes_;
  std::uint64_t bytes_ = 0;
};

}  // namespace tavlen
