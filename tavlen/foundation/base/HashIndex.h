#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// An open-addressing hash table of indices into storage that the caller owns. It allocates rarely
/// and compares objects only when their hashes are equal. Threads: one object one thread at a time.
class TAVLEN_API HashIndex {
 public:
  /// A position in the caller's storage.
  using Index = std::uint32_t;

  /// The result of find() when nothing matches; never added.
  static constexpr Index kNone = std::numeric_limits<Index>::max();

  /// Returns the index that was added with this hash and for which `isEqual(index)` is true, or
  /// kNone.
  template <class IsEqual>
  Index find(std::size_t hash, const IsEqual& isEqual) const {
    if (slots_.empty()) return kNone;
    const auto mark = static_cast<std::uint32_t>(hash);
    for (std::size_t i = mark & mask();; i = (i + 1) & mask()) {
      const Slot& slot = slots_[i];
      if (slot.index == kNone) return kNone;
      if (slot.mark == mark && isEqual(slot.index)) return slot.index;
    }
  }

  /// Adds `index` under `hash`. `index` is not kNone and has not been added before. Throws
  /// std::bad_alloc.
  void add(std::size_t hash, Index index);

 private:
  struct Slot {
    std::uint32_t mark = 0;  ///< the low half of the hash
    Index index = kNone;
  };

  std::size_t mask() const { return slots_.size() - 1; }
  void place(Slot slot);

  std::vector<Slot> slots_;  ///< a power of two in size, at most half full
  std::size_t count_ = 0;
};

}  // namespace tavlen
