#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tavlen/foundation/zip/detail/Deflater.h"
#include "tavlen/foundation/zip/detail/ZIPTree.h"

namespace tavlen {

/// Deflates the files of an archive on all processors, a few parts ahead of their use. A part is a
/// small file or a block of a large one, so the memory does not grow with the files. What a part
/// becomes does not depend on the threads.
///
/// Threads: one object one thread at a time.
class ZIPDeflation {
 public:
  /// A part of a file, deflated.
  struct Part {
    const ZIPItem* item = nullptr;  ///< the file
    std::string bytes;
    std::uint32_t crc = 0;   ///< of what was read
    std::uint64_t size = 0;  ///< the number of bytes that were read
    bool isLast = false;     ///< of its file
  };

  /// `items` must outlive the object. Folders are skipped.
  explicit ZIPDeflation(const std::vector<ZIPItem>& items);
  ZIPDeflation(const ZIPDeflation&) = delete;
  ZIPDeflation& operator=(const ZIPDeflation&) = delete;
  /// Waits for the parts that are being made, and drops them.
  ~ZIPDeflation();

  /// The next part, in the order of `items` and of the bytes. A file that has grown is read up to
  /// the size in `items`. Throws std::system_error with the path, also for what is no regular file.
  Part take();

 private:
  struct Slot {
    Part part;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    bool isDone = false;
    std::exception_ptr failure;
  };

  void run();
  bool hasNext() const { return item_ != items_.size(); }
  Slot& addNext();
  void skipFolders();
  static void make(Slot& slot, Deflater& deflater);

  const std::vector<ZIPItem>& items_;
  std::size_t item_ = 0;      ///< of the next part
  std::uint64_t offset_ = 0;  ///< the same
  std::size_t mostAhead_ = 1;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Slot> slots_;  ///< in order; a slot stays at its place while it is made
  bool isEnding_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace tavlen
