#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/zip/detail/ZIPEntry.h"
#include "tavlen/foundation/zip/detail/ZIPSource.h"

namespace tavlen {

/// Reads the data of an archive's entries, inflated and verified. Threads: one object one thread at
/// a time.
class ZIPReader {
 public:
  /// `entries` are the result of readZIPDirectory() for `archive`; both must outlive the object.
  /// Throws ZIPError (damagedArchive) when libzip reads a different directory.
  ZIPReader(const RandomAccessFile& archive, const std::vector<ZIPEntry>& entries);
  ZIPReader(const ZIPReader&) = delete;
  ZIPReader& operator=(const ZIPReader&) = delete;
  ~ZIPReader();

  /// Passes the entry's data to `take`, in pieces, never more than its recorded size. Throws
  /// ZIPError (sizeMismatch, checksumMismatch, damagedData, unsupportedEntry), std::system_error.
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
