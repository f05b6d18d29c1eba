#include "tavlen/foundation/base/HashIndex.h"

#include <algorithm>
#include <utility>

namespace tavlen {

void HashIndex::place(Slot slot) {
  std::size_t i = slot.mark & mask();
  while (slots_[i].index != kNone) i = (i + 1) & mask();
  slots_[i] = slot;
}

void HashIndex::add(std::size_t hash, Index index) {
  if (2 * (count_ + 1) > slots_.size()) {
    constexpr std::size_t kFewest = 64;
    std::vector<Slot> old(std::max(2 * slots_.size(), kFewest));
    old.swap(slots_);
    for (const Slot& slot : old) {
      if (slot.index != kNone) place(slot);
    }
  }
  place({static_cast<std::uint32_t>(hash), index});
  ++count_;
}

}  // namespace tavlen
