#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/zip/detail/ZIPTree.h"

namespace tavlen {

/// Deflates the files of an archive on up to three threads of its own, a few parts ahead of their
/// use. A part is a small file or a block of a large one, so the memory does not grow with the
/// files: less than 4 MB for each thread, and 5 MB for parts that wait. What a part becomes does
/// not depend on the threads.
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

  /// `items` must outlive the object. Folders are skipped. Starts at most as many threads as there
  /// are processors and parts; if the system has none left, take() does the work. Throws
  /// std::bad_alloc.
  explicit ZIPDeflation(const std::vector<ZIPItem>& items);
  ZIPDeflation(const ZIPDeflation&) = delete;
  ZIPDeflation& operator=(const ZIPDeflation&) = delete;
  /// Waits for the parts that are being made, and drops them.
  ~ZIPDeflation();

  /// The next part, in the order of `items` and of the bytes. A file is opened once, so all parts
  /// are of the same one, even if another takes its place. If it has grown, it is read up to the
  /// size in `items`; if it has shrunk, up to where it first was found to end. Throws
  /// std::system_error with the path, also for what is no regular file. Not to be called after it
  /// threw.
  Part take();

 private:
  struct Maker;

  struct Slot {
    Part part;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
    std::shared_ptr<const FileDescriptor> file;  ///< of a large file, until the part is made
    bool isDone = false;
    std::exception_ptr failure;
  };

  /// Ends and joins the threads when it is destroyed, even if not all could be started.
  struct Crew {
    explicit Crew(ZIPDeflation& object) : owner(object) {}
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;
    ~Crew();

    ZIPDeflation& owner;
    std::vector<std::thread> threads;
  };

  /// Parts that are being made or wait for their turn.
  static constexpr std::size_t kMostAhead = 4;

  void run();
  bool hasNext() const { return item_ != items_.size(); }
  Slot& addNext() noexcept;
  void skipFolders();
  static void fill(Slot& slot, std::unique_ptr<Maker>& maker) noexcept;
  static void make(Slot& slot, Maker& maker);

  const std::vector<ZIPItem>& items_;
  std::size_t item_ = 0;                        ///< of the next part
  std::uint64_t offset_ = 0;                    ///< the same
  std::shared_ptr<const FileDescriptor> file_;  ///< the same, if it has further parts
  bool isCut_ = false;                          ///< the file of the part last taken ended early
  std::mutex mutex_;
  std::condition_variable changed_;
  std::unique_ptr<Maker> ownMaker_;     ///< of take(), without threads
  std::array<Slot, kMostAhead> slots_;  ///< a ring; a slot stays at its place while it is made
  std::size_t first_ = 0;               ///< the slot of the part to be taken next
  std::size_t count_ = 0;               ///< the slots in use, from there on
  bool isEnding_ = false;
  Crew crew_{*this};  ///< destroyed before what the threads use
};

}  // namespace tavlen
