#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/LittleEndian.h"
#include "tavlen/foundation/files/FilePages.h"

namespace tavlen {

/// The bytes of an image by the addresses that it has in memory, as far as they are in the file.
///
/// Any address may be asked for: one outside of the file gives nothing. Throws std::system_error
/// when the file cannot be read. Threads: one object one thread at a time.
class TAVLEN_API MachOMemory {
 public:
  /// A segment: a part of the file at an address.
  struct Segment {
    std::uint64_t address = 0;  ///< of the first byte
    std::uint64_t size = 0;     ///< in the file, in bytes
    std::uint64_t offset = 0;   ///< in the file
    /// Its number in the image, to which fixups refer.
    std::uint32_t index = 0;
  };

  /// The longest text. Types of C++ methods have up to some 150 kB.
  static constexpr std::size_t kLongestText = std::size_t{1} << 20;

  /// `segments` lie within `pages`.
  MachOMemory(std::shared_ptr<FilePages> pages, std::vector<Segment> segments);

  MachOMemory(const MachOMemory&) = delete;
  MachOMemory& operator=(const MachOMemory&) = delete;
  /// Closes the file: what keeps the pages of many images must not keep as many files open.
  ~MachOMemory() { pages_->closeFile(); }

  /// Keeps the bytes alive that this object has returned.
  std::shared_ptr<const FilePages> pages() const { return pages_; }

  /// The segment with `address`; null outside of all.
  const Segment* segmentAt(std::uint64_t address) const {
    // Neighbours are asked for one after the other.
    if (last_ != nullptr && address - last_->address < last_->size) return last_;
    return findSegment(address);
  }

  /// The number of bytes from `address` to the end of its segment.
  std::uint64_t sizeAt(std::uint64_t address) const {
    const Segment* segment = segmentAt(address);
    return segment == nullptr ? 0 : segment->size - (address - segment->address);
  }

  /// The bytes from `address` on; valid as long as pages(). Nothing unless all are in one segment.
  std::optional<std::string_view> bytesAt(std::uint64_t address, std::size_t count) const {
    const Segment* segment = segmentAt(address);
    if (segment == nullptr) return std::nullopt;
    const std::uint64_t inside = address - segment->address;
    if (count > segment->size - inside) return std::nullopt;
    return pages_->bytes(static_cast<std::size_t>(segment->offset + inside), count);
  }

  /// The little-endian number at `address`.
  template <class Unsigned>
  std::optional<Unsigned> numberAt(std::uint64_t address) const {
    const std::optional<std::string_view> bytes = bytesAt(address, sizeof(Unsigned));
    if (!bytes) return std::nullopt;
    return littleEndian<Unsigned>(*bytes, 0);
  }

  /// The text at `address`, up to its NUL; valid as long as pages(). Nothing for one that does not
  /// end within its segment or is too long.
  std::optional<std::string_view> textAt(std::uint64_t address) const;

 private:
  const Segment* findSegment(std::uint64_t address) const;

  std::shared_ptr<FilePages> pages_;
  std::vector<Segment> segments_;  ///< sorted by address
  mutable const Segment* last_ = nullptr;
};

}  // namespace tavlen
