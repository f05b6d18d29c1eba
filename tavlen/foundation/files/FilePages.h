#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/RandomAccessFile.h"

namespace tavlen {

/// A part of a file as one range of memory, of which only the pages that are asked for are read and
/// take memory. They are copies: unlike a mapped file, one that is truncated concurrently is an
/// error and no signal.
///
/// Threads: one object one thread at a time; the bytes that it has returned may be read by all.
class TAVLEN_API FilePages {
 public:
  /// The `size` bytes of `file` from `offset` on. Reads nothing. Throws std::system_error when
  /// there is no room for them in the address space.
  FilePages(std::shared_ptr<const RandomAccessFile> file, std::uint64_t offset, std::size_t size);
  FilePages(const FilePages&) = delete;
  FilePages& operator=(const FilePages&) = delete;
  ~FilePages();

  /// In bytes.
  std::size_t size() const { return size_; }

  /// The `count` bytes from `offset` on, which must lie within the size. They stay where they are
  /// as long as this object. Throws std::system_error when reading fails, or when the file has
  /// become shorter.
  std::string_view bytes(std::size_t offset, std::size_t count) {
    if (count == 0) return {};
    const std::size_t last = (offset + count - 1) / kPageSize;
    for (std::size_t page = offset / kPageSize; page <= last; ++page) {
      if (isRead_[page] == 0) readPage(page);
    }
    return {start_ + offset, count};
  }

  /// Closes the file. The bytes that were returned stay; no others may be asked for.
  void closeFile() { file_.reset(); }

  /// The number of bytes that are read at once.
  static constexpr std::size_t kPageSize = std::size_t{1} << 16;

 private:
  void readPage(std::size_t page);

  std::shared_ptr<const RandomAccessFile> file_;
  std::uint64_t offset_;
  std::size_t size_;
  char* start_ = nullptr;
  std::vector<unsigned char> isRead_;  ///< by page
};

}  // namespace tavlen
