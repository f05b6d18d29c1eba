#include "tavlen/foundation/zip/detail/ZIPDeflation.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/zip/detail/Deflater.h"

namespace tavlen {

namespace {

/// Up to this size, a file is one part, which the faster library deflates as a whole.
constexpr std::uint64_t kWholeFile = std::uint64_t{1} << 20;
/// The size of the blocks of larger files.
constexpr std::uint64_t kBlock = kWholeFile;
/// More threads would need more memory: each holds a part up to three times.
constexpr std::size_t kMostThreads = 3;

bool isWhole(const ZIPItem& item) { return item.size <= kWholeFile; }

/// The number of parts of the files in `items`, but at most `most`.
std::size_t countParts(const std::vector<ZIPItem>& items, std::size_t most) {
  std::uint64_t count = 0;
  for (const ZIPItem& item : items) {
    if (!item.isFolder()) count += isWhole(item) ? 1 : (item.size - 1) / kBlock + 1;
    if (count >= most) return most;
  }
  return static_cast<std::size_t>(count);
}

FileDescriptor openRegularFile(const std::filesystem::path& path) {
  FileDescriptor file = FileDescriptor::open(path, kOpenToRead | O_NOFOLLOW);
  if (!S_ISREG(file.status(path).st_mode)) throwSystemError(EINVAL, path);
  return file;
}

/// Empties a part of a file that ended in an earlier one.
void cut(ZIPDeflation::Part& part) {
  constexpr std::string_view kEnd("\3\0", 2);  // the deflated form of nothing
  part.bytes = part.isLast ? kEnd : std::string_view();
  part.crc = 0;
  part.size = 0;
}

}  // namespace

/// What a thread needs to make parts, and keeps for the next one.
struct ZIPDeflation::Maker {
  Deflater deflater;
  std::vector<char> input;
};

ZIPDeflation::ZIPDeflation(const std::vector<ZIPItem>& items) : items_(items) {
  skipFolders();
  const std::size_t processors =
      std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMostThreads);
  const std::size_t threads = countParts(items, processors);
  crew_.threads.reserve(threads);
  try {
    while (crew_.threads.size() < threads) crew_.threads.emplace_back([this] { run(); });
  } catch (const std::system_error&) {
    // The system has no more threads. Fewer do the same; without any, take() does.
  }
}

ZIPDeflation::~ZIPDeflation() = default;

ZIPDeflation::Crew::~Crew() {
  {
    const std::lock_guard lock(owner.mutex_);
    owner.isEnding_ = true;
  }
  owner.changed_.notify_all();
  for (std::thread& thread : threads) thread.join();
}

ZIPDeflation::Part ZIPDeflation::take() {
  std::unique_lock lock(mutex_);
  if (crew_.threads.empty()) {
    Slot& slot = addNext();
    fill(slot, ownMaker_);
    slot.isDone = true;
  }
  changed_.wait(lock, [&] { return count_ > 0 && slots_[first_].isDone; });
  Slot slot = std::exchange(slots_[first_], {});
  first_ = (first_ + 1) % kMostAhead;
  --count_;
  lock.unlock();
  changed_.notify_all();
  if (slot.failure) std::rethrow_exception(slot.failure);
  if (isCut_) cut(slot.part);
  isCut_ = !slot.part.isLast && (isCut_ || slot.part.size < slot.length);
  return std::move(slot.part);
}

void ZIPDeflation::run() {
  const auto mayBegin = [&] { return isEnding_ || (hasNext() && count_ < kMostAhead); };
  std::unique_ptr<Maker> maker;
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, mayBegin);
    if (isEnding_) return;
    Slot& slot = addNext();
    lock.unlock();
    fill(slot, maker);
    lock.lock();
    slot.isDone = true;
    changed_.notify_all();
  }
}

void ZIPDeflation::skipFolders() {
  while (hasNext() && items_[item_].isFolder()) ++item_;
}

ZIPDeflation::Slot& ZIPDeflation::addNext() noexcept {
  const ZIPItem& item = items_[item_];
  Slot& slot = slots_[(first_ + count_++) % kMostAhead];
  slot.part.item = &item;
  slot.offset = offset_;
  slot.length = isWhole(item) ? item.size : std::min(kBlock, item.size - offset_);
  if (offset_ == 0 && !isWhole(item)) {
    try {
      file_ = std::make_shared<const FileDescriptor>(openRegularFile(item.path));
    } catch (...) {
      slot.failure = std::current_exception();
      item_ = items_.size();  // nothing after it will be taken
      return slot;
    }
  }
  slot.file = file_;
  offset_ += slot.length;
  slot.part.isLast = offset_ == item.size;
  if (slot.part.isLast) {
    offset_ = 0;
    file_.reset();
    ++item_;
    skipFolders();
  }
  return slot;
}

void ZIPDeflation::fill(Slot& slot, std::unique_ptr<Maker>& maker) noexcept {
  if (slot.failure) return;
  try {
    if (!maker) maker = std::make_unique<Maker>();
    make(slot, *maker);
  } catch (...) {
    slot.failure = std::current_exception();
  }
  slot.file.reset();
}

void ZIPDeflation::make(Slot& slot, Maker& maker) {
  const std::filesystem::path& path = slot.part.item->path;
  const auto length = static_cast<std::size_t>(slot.length);
  if (maker.input.size() < length) maker.input.resize(length);
  const std::span<char> room(maker.input.data(), length);
  const std::size_t size = slot.file ? slot.file->readAt(slot.offset, room, path)
                                     : openRegularFile(path).readAt(slot.offset, room, path);
  const std::string_view bytes(room.data(), size);
  slot.part.size = size;
  slot.part.crc = libdeflate_crc32(0, bytes.data(), bytes.size());
  slot.part.bytes =
      slot.file ? maker.deflater.block(bytes, slot.part.isLast) : maker.deflater.whole(bytes);
}

}  // namespace tavlen
