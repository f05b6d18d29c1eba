#pragma once

#include <cstdint>
#include <memory>
#include <string>
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

  /// The first `count` bytes of the entry's data, or fewer where it ends, unverified. `count` is at
  /// most 64 KiB. Throws as read() does.
  std::string readFirst(std::size_t index, std::size_t count);

 private:
  struct Closer;
  using OpenEntry = std::unique_ptr<zip_file_t, Closer>;

  void requireSameDirectory() const;
  OpenEntry open(std::size_t index) const;
  /// Reads into the buffer, at most `count` bytes; 0 at the end of the data.
  std::size_t readPiece(zip_file_t* file, const ZIPEntry& entry, std::uint64_t done,
                        std::size_t count);
  [[noreturn]] void fail(const ZIPEntry& entry, std::uint64_t done, int code) const;

  const std::vector<ZIPEntry>& entries_;
  ZIPFailure failure_;
  std::vector<char> buffer_;
  zip_t* zip_ = nullptr;
};

}  // namespace tavlen
