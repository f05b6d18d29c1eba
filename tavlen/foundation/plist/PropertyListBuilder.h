#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Builds a list from nested containers. A container is added to the list when it ends, so after
/// its contents; the root comes last. Calls must be balanced. Throws std::length_error as
/// PropertyList::add() does.
class TAVLEN_API PropertyListBuilder {
 public:
  /// The index of an object in the list.
  using Index = PropertyList::Index;

  /// Adds `node` to the open container, or as the root outside of any.
  void add(const PropertyList::Node& node) { place(list_.add(node)); }
  /// Opens an array.
  void beginArray() { open_.push_back({PropertyList::Kind::array, members_.size(), {}}); }
  /// Opens a dictionary.
  void beginDictionary() { open_.push_back({PropertyList::Kind::dictionary, members_.size(), {}}); }
  /// Sets the key of the next value in the open dictionary.
  void key(std::string_view text) { open_.back().key = list_.add(text); }
  /// Ends the open container and adds it.
  void end();
  /// Ends the open dictionary, but adds `node` instead of it.
  void endAs(const PropertyList::Node& node);

  /// The number of open containers.
  std::size_t depth() const { return open_.size(); }
  /// Whether the innermost open container is a dictionary.
  bool isInDictionary() const {
    return !open_.empty() && open_.back().kind == PropertyList::Kind::dictionary;
  }
  /// Whether the open dictionary has a key that still lacks its value.
  bool hasKey() const { return open_.back().key.has_value(); }
  /// The members of the open dictionary, valid until the next call.
  std::span<const PropertyList::Member> members() const;

  /// The list so far. Its root is the object added last.
  const PropertyList& list() const { return list_; }
  /// Moves the list out of the builder.
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
  /// Of all open containers; an array's elements have no keys.
  std::vector<PropertyList::Member> members_;
  std::vector<Index> elements_;
};

}  // namespace tavlen
