#include "tavlen/foundation/macho/MachOMemory.h"

#include <algorithm>

namespace tavlen {

MachOMemory::MachOMemory(std::shared_ptr<FilePages> pages, std::vector<Segment> segments)
    : pages_(std::move(pages)), segments_(std::move(segments)) {
  std::stable_sort(
      segments_.begin(), segments_.end(),
      [](const Segment& left, const Segment& right) { return left.address < right.address; });
}

const MachOMemory::Segment* MachOMemory::findSegment(std::uint64_t address) const {
  auto next = std::upper_bound(
      segments_.begin(), segments_.end(), address,
      [](std::uint64_t value, const Segment& segment) { return value < segment.address; });
  if (next == segments_.begin()) return nullptr;
  const Segment& segment = *std::prev(next);
  if (address - segment.address >= segment.size) return nullptr;
  last_ = &segment;
  return last_;
}

std::optional<std::string_view> MachOMemory::textAt(std::uint64_t address) const {
  const Segment* segment = segmentAt(address);
  if (segment == nullptr) return std::nullopt;
  const std::uint64_t inside = address - segment->address;
  const auto start = static_cast<std::size_t>(segment->offset + inside);
  const auto longest =
      static_cast<std::size_t>(std::min<std::uint64_t>(segment->size - inside, kLongestText));
  // Page by page, so that no more is read than the text needs.
  std::size_t checked = 0;
  while (checked < longest) {
    const std::size_t toPageEnd = FilePages::kPageSize - (start + checked) % FilePages::kPageSize;
    const std::size_t count = std::min(longest - checked, toPageEnd);
    const std::string_view piece = pages_->bytes(start + checked, count);
    const void* end = std::memchr(piece.data(), 0, piece.size());
    if (end != nullptr) {
      const char* first = piece.data() - checked;
      return std::string_view(first,
                              static_cast<std::size_t>(static_cast<const char*>(end) - first));
    }
    checked += count;
  }
  return std::nullopt;
}

}  // namespace tavlen
