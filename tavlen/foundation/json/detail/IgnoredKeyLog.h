#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/json/IgnoredKeys.h"

namespace tavlen {

/// Describes keys that a decoder ignores. Follows its path through the document. Used only by
/// JSONDecoder.
class IgnoredKeyLog {
 public:
  /// Where the log is, to return there.
  struct Mark {
    std::size_t depth;
    std::size_t count;
    std::size_t others;
    const char* position;
    TextPosition place;
  };

  /// A log of the document `text` that adds to `ignored`.
  IgnoredKeyLog(std::string_view text, IgnoredKeys& ignored)
      : ignored_(ignored), position_(text.data()) {}

  /// Called around the reading of a member, whose key stays valid until leave().
  void enterKey(std::string_view key) { path_.push_back({key, 0, true}); }
  /// Called around the reading of an element.
  void enterIndex(std::size_t index) { path_.push_back({{}, index, false}); }
  void leave() { path_.pop_back(); }

  /// Adds a key that begins at `position`, which never decreases but for returnTo(). `known` are
  /// the keys that are read in its object.
  void addUnknown(std::string_view key, const char* position,
                  std::span<const std::string_view> known);
  void addRepeated(std::string_view key, const char* position);

  /// The present state.
  Mark mark() const {
    return {path_.size(), ignored_.keys.size(), ignored_.others, position_, place_};
  }
  /// Drops what was added since `mark`.
  void returnTo(const Mark& mark);

 private:
  struct Step {
    std::string_view key;
    std::size_t index;
    bool isKey;
  };

  bool isFull();
  void add(std::string_view code, std::string_view key, const char* position, std::string text);
  std::string pathTo(std::string_view key) const;

  IgnoredKeys& ignored_;
  std::vector<Step> path_;
  const char* position_;  ///< of the last key
  TextPosition place_;    ///< of position_
};

}  // namespace tavlen
