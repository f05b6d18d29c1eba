#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace tavlen {

/// Finds things that lie elsewhere, in a table of their indices: an open hash table that allocates
/// once for many things and compares those of equal hashes only.
class HashIndex {
 public:
  using Index = std::uint32_t;

  static constexpr Index kNone = std::numeric_limits<Index>::max();

  /// The index that was added with this hash and for which `isEqual(index)` says so; kNone when
  /// there is none.
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

  /// `index` is not kNone and has not been added before.
  void add(std::size_t hash, Index index);

 private:
  struct Slot {
    std::uint32_t mark = 0;  ///< the low half of the hash
    Index index = kNone;
  };

  std::size_t mask() const { return slots_.size() - 1; }
  void place(Slot slot);

  std::vector<Slot> slots_;  ///< a power of two of them, at the most half of which are taken
  std::size_t count_ = 0;
};

}  // namespace tavlen
