#include "tavlen/foundation/zip/detail/ZIPDeflation.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

namespace {

/// Up to this size, a file is one part, which the faster library deflates as a whole.
constexpr std::uint64_t kWholeFile = std::uint64_t{2} << 20;
/// The size of the blocks of larger files.
constexpr std::uint64_t kBlock = std::uint64_t{1} << 20;
/// More threads would need more memory: each holds a part twice.
constexpr unsigned kMostThreads = 4;
/// Parts that wait for their turn, so that a slow part does not stop the other threads.
constexpr std::size_t kWaiting = 2;

}  // namespace

ZIPDeflation::ZIPDeflation(const std::vector<ZIPItem>& items) : items_(items) {
  skipFolders();
  const unsigned threads = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
  threads_.reserve(threads);
  try {
    while (threads_.size() < threads) threads_.emplace_back([this] { run(); });
  } catch (const std::system_error&) {
    // The system has no more threads; those that there are will do, or take() without any.
  }
  const std::lock_guard lock(mutex_);
  mostAhead_ = threads_.size() + kWaiting;
}

ZIPDeflation::~ZIPDeflation() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

ZIPDeflation::Part ZIPDeflation::take() {
  std::unique_lock lock(mutex_);
  if (threads_.empty()) {
    Deflater deflater;
    Slot& slot = addNext();
    make(slot, deflater);
    slot.isDone = true;
  }
  changed_.wait(lock, [&] { return !slots_.empty() && slots_.front().isDone; });
  Slot slot = std::move(slots_.front());
  slots_.pop_front();
  lock.unlock();
  changed_.notify_all();
  if (slot.failure) std::rethrow_exception(slot.failure);
  return std::move(slot.part);
}

void ZIPDeflation::run() {
  const auto mayBegin = [&] { return isEnding_ || (hasNext() && slots_.size() < mostAhead_); };
  std::unique_ptr<Deflater> deflater;
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, mayBegin);
    if (isEnding_) return;
    Slot& slot = addNext();
    lock.unlock();
    try {
      if (!deflater) deflater = std::make_unique<Deflater>();
      make(slot, *deflater);
    } catch (...) {
      slot.failure = std::current_exception();
    }
    lock.lock();
    slot.isDone = true;
    changed_.notify_all();
  }
}

void ZIPDeflation::skipFolders() {
  while (hasNext() && items_[item_].isFolder()) ++item_;
}

ZIPDeflation::Slot& ZIPDeflation::addNext() {
  const ZIPItem& item = items_[item_];
  Slot& slot = slots_.emplace_back();
  slot.part.item = &item;
  slot.offset = offset_;
  slot.length = item.size <= kWholeFile ? item.size : std::min(kBlock, item.size - offset_);
  offset_ += slot.length;
  slot.part.isLast = offset_ == item.size;
  if (slot.part.isLast) {
    offset_ = 0;
    ++item_;
    skipFolders();
  }
  return slot;
}

void ZIPDeflation::make(Slot& slot, Deflater& deflater) {
  const ZIPItem& item = *slot.part.item;
  const FileDescriptor file = FileDescriptor::open(item.path, kOpenToRead | O_NOFOLLOW);
  if (!S_ISREG(file.status(item.path).st_mode)) throwSystemError(EINVAL, item.path);
  std::string bytes(static_cast<std::size_t>(slot.length), '\0');
  bytes.resize(file.readAt(slot.offset, bytes, item.path));
  slot.part.size = bytes.size();
  slot.part.crc = libdeflate_crc32(0, bytes.data(), bytes.size());
  const bool isWhole = slot.offset == 0 && slot.part.isLast;
  slot.part.bytes = isWhole ? deflater.whole(bytes) : deflater.block(bytes, slot.part.isLast);
}

}  // namespace tavlen
