#include "tavlen/foundation/files/FilePages.h"

#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"

namespace tavlen {

FilePages::FilePages(std::shared_ptr<const RandomAccessFile> file, std::uint64_t offset,
                     std::size_t size)
    : file_(std::move(file)),
      offset_(offset),
      size_(size),
      isRead_((size + kPageSize - 1) / kPageSize) {
  if (size == 0) return;
  // The system provides a page of memory when it is first written.
  void* memory =
      ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANON | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) throwSystemError(file_->path());
  start_ = static_cast<char*>(memory);
}

FilePages::~FilePages() {
  if (start_ != nullptr) ::munmap(start_, size_);
}

void FilePages::readPage(std::size_t page) {
  const std::size_t begin = page * kPageSize;
  const std::size_t count = std::min(kPageSize, size_ - begin);
#ifdef MADV_POPULATE_WRITE
  // All at once, which costs less than one page after the other while they are written. Where the
  // system refuses, it does just that.
  ::madvise(start_ + begin, count, MADV_POPULATE_WRITE);
#endif
  if (file_->readInto(offset_ + begin, {start_ + begin, count}) < count) {
    throwSystemError(EIO, file_->path() + ": the file was truncated while it was read");
  }
  isRead_[page] = 1;
}

}  // namespace tavlen
