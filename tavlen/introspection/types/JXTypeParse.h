#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

class JXType;

/// The state of parsing one type, from its root down. Part of a cursor; only for the type classes.
///
/// Members of an aggregate may be parsed twice (JXTypeMembers explains why), and so may the members
/// within them, each time: without further measures, nested aggregates would take time exponential
/// in their depth. Two measures keep it linear. `readings` caches how a member was parsed at a
/// position, so parsing it again is a look-up. Hostile texts that defeat the cache, because they
/// nest differently each time, run into the limit on `steps`.
struct TAVLEN_API JXTypeParse {
  /// RAII: a container being parsed. The outermost one resets the state, and clears the cache at
  /// its end.
  class Level {
   public:
    /// Enters a container that begins at `position`.
    Level(JXTypeParse& parse, std::size_t position);
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    ~Level();

   private:
    JXTypeParse& parse_;
    std::size_t members_;
    std::size_t names_;
  };

  /// The result of parsing a member.
  struct Reading {
    std::shared_ptr<JXType> type;  ///< the parsed member
    std::size_t end = 0;           ///< the position after it
    bool hasCorrected = false;     ///< whether a member within it was parsed twice
  };

  /// Steps allowed for each byte of the text read. A step is a byte passed, for the first time or
  /// again. Encodings emitted by compilers need less than two.
  static constexpr std::uint64_t kStepsPerByte = 4;
  /// Steps allowed in addition.
  static constexpr std::uint64_t kFreeSteps = 4096;

  /// Whether a type that begins with `character`, without qualifiers, may be a container.
  static constexpr bool holdsOthers(char character) {
    return character == '{' || character == '(' || character == '[' || character == '^';
  }
  /// Whether another container may be parsed.
  bool hasRoom() const;
  /// Counts `newSteps` for text up to `position`.
  void count(std::size_t position, std::uint64_t newSteps) {
    steps += newSteps;
    if (position > furthest) furthest = position;
  }
  /// The cache key for a member at `position`.
  std::uint64_t key(std::size_t position, bool ignoresNames) const {
    return std::uint64_t{position} << 9 | std::uint64_t{depth} << 1 | std::uint64_t{ignoresNames};
  }

  unsigned depth = 0;             ///< number of containers being parsed
  std::size_t begin = 0;          ///< offset of the root
  std::size_t furthest = 0;       ///< the end of the text read so far
  std::uint64_t steps = 0;        ///< steps taken so far
  std::uint64_t corrections = 0;  ///< number of members parsed twice
  /// The cache of parsed members, by key().
  std::unordered_map<std::uint64_t, Reading> readings;
  /// The members of all unfinished aggregates, the innermost's last.
  std::vector<std::shared_ptr<JXType>> members;
  /// Their names.
  std::vector<std::string_view> names;
};

}  // namespace tavlen
