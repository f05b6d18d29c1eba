#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tavlen {

class JXType;

/// What the reading of one type, from its root down, remembers. Part of a cursor; for the classes
/// of the type family only.
///
/// A member of an aggregate may be read again, ignoring the names of objects, and so may the
/// members within it, each time it is read: in a nest of such aggregates two to the power of its
/// depth times. So what a place was read as is kept. That leaves texts that are made to nest
/// otherwise each time that they are read; these meet the bound on the work.
struct JXTypeParse {
  /// One of the types being read that hold others, from its first character to its last. The first
  /// one's begins anew what is remembered, and lets go of it at the end.
  class Level {
   public:
    Level(JXTypeParse& parse, std::size_t position);
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level();

   private:
    JXTypeParse& parse_;
    std::size_t members_;
    std::size_t names_;
  };

  /// How a member was read.
  struct Reading {
    std::shared_ptr<JXType> type;
    std::size_t end = 0;
    bool hasCorrected = false;  ///< whether a member within it was read again
  };

  /// Steps that may be taken for each byte of the text read, and before there are any. A step
  /// passes a byte, the first or another time. Texts as compilers write them need less than two a
  /// byte.
  static constexpr std::uint64_t kStepsPerByte = 4;
  static constexpr std::uint64_t kFreeSteps = 4096;

  /// Whether a type that begins with `character`, and no qualifier, may hold others.
  static constexpr bool holdsOthers(char character) {
    return character == '{' || character == '(' || character == '[' || character == '^';
  }
  /// Whether another type that holds others may be read.
  bool hasRoom() const;
  /// Counts what is about to be done at `position`.
  void count(std::size_t position, std::uint64_t newSteps) {
    steps += newSteps;
    if (position > furthest) furthest = position;
  }
  /// Under which a reading at `position` is kept.
  std::uint64_t key(std::size_t position, bool ignoresNames) const {
    return std::uint64_t{position} << 9 | std::uint64_t{depth} << 1 | std::uint64_t{ignoresNames};
  }

  unsigned depth = 0;             ///< types that hold others and are being read
  std::size_t begin = 0;          ///< of the root
  std::size_t furthest = 0;       ///< the furthest place that was read
  std::size_t furthestTaken = 0;  ///< the furthest end of a member that was taken back
  std::uint64_t steps = 0;
  std::uint64_t corrections = 0;  ///< members that were read again
  std::unordered_map<std::uint64_t, Reading> readings;
  /// The members and their names of all aggregates that are being read, the innermost's last.
  std::vector<std::shared_ptr<JXType>> members;
  std::vector<std::string_view> names;
};

}  // namespace tavlen
