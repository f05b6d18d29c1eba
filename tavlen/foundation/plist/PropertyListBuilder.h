#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Adds containers to a list while they are still open: each goes into the list when it ends, so
/// after what it holds, and the root comes last.
class PropertyListBuilder {
 public:
  using Index = PropertyList::Index;

  /// Adds `node`, to the container that is open if there is one.
  void add(const PropertyList::Node& node) { place(list_.add(node)); }
  void beginArray() { open_.push_back({PropertyList::Kind::array, members_.size(), {}}); }
  void beginDictionary() { open_.push_back({PropertyList::Kind::dictionary, members_.size(), {}}); }
  /// The key of the next value in the dictionary that is open.
  void key(std::string_view text) { open_.back().key = list_.add(text); }
  void end();
  /// Ends the dictionary that is open and adds `node` in its place.
  void endAs(const PropertyList::Node& node);

  std::size_t depth() const { return open_.size(); }
  bool isInDictionary() const {
    return !open_.empty() && open_.back().kind == PropertyList::Kind::dictionary;
  }
  /// Whether the dictionary that is open has a key that waits for its value.
  bool hasKey() const { return open_.back().key.has_value(); }
  /// The members of the dictionary that is open.
  std::span<const PropertyList::Member> members() const;

  /// What has been built; its root is what was added last.
  const PropertyList& list() const { return list_; }
  PropertyList take() { return std::move(list_); }

 private:
  struct Frame {
    PropertyList::Kind kind;
    std::size_t firstMember;
    std::optional<Index> key;
  };

  void place(Index index);

  PropertyList list_;
  std::vector<Frame> open_;
  std::vector<PropertyList::Member> members_;  ///< of all that are open; an array's have no keys
  std::vector<Index> elements_;
};

}  // namespace tavlen
