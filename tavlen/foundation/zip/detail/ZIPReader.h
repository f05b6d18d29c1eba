#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/zip/detail/ZIPEntry.h"
#include "tavlen/foundation/zip/detail/ZIPSource.h"

namespace tavlen {

/// The data of an archive's entries, inflated and checked.
/// Threads: one object one thread at a time.
class ZIPReader {
 public:
  /// `entries` are what readZIPDirectory() gave for `archive`. Both must live as long. Throws
  /// ZIPError (damagedArchive) where libzip takes another directory for the archive's.
  ZIPReader(const RandomAccessFile& archive, const std::vector<ZIPEntry>& entries);
  ZIPReader(const ZIPReader&) = delete;
  ZIPReader& operator=(const ZIPReader&) = delete;
  ~ZIPReader();

  /// Gives the entry's data to `take`, piece by piece: never more than its size. Throws ZIPError
  /// (sizeMismatch, checksumMismatch, damagedData), std::system_error.
  void read(std::size_t index, FunctionRef<void(std::string_view)> take);

 private:
  void requireSameDirectory() const;
  [[noreturn]] void fail(const ZIPEntry& entry, std::uint64_t done, int code) const;

  const std::vector<ZIPEntry>& entries_;
  ZIPFailure failure_;
  std::vector<char> buffer_;
  zip_t* zip_ = nullptr;
};

}  // namespace tavlen
