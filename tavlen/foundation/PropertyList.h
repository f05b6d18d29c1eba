#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "tavlen/foundation/CodingError.h"
#include "tavlen/foundation/Date.h"

namespace tavlen {

/// A property list as a flat table: every object once, containers hold indices into the table.
///
/// Objects may be shared by several containers, may be reached by nobody, and may form a cycle;
/// whoever walks from the root needs a limit. In a list that was read, the indices that containers
/// hold are in range and the keys of dictionaries are strings.
/// Nothing here recurses, so any depth can be built, read and destroyed. It is a plain value;
/// const calls may run side by side.
class PropertyList {
 public:
  using Index = std::uint32_t;

  /// In the order of Node's alternatives. Any integer that fits may be an `integer`; an
  /// `unsignedInteger` is above 2^63-1, or was stored in the binary form's 16 bytes, as the
  /// platform does with unsigned types whatever their value.
  enum class Kind {
    boolean,
    integer,
    unsignedInteger,
    real,
    date,
    data,
    string,
    uid,
    array,
    dictionary
  };

  struct Data {
    std::string bytes;
    bool operator==(const Data&) const = default;
  };
  /// A number that points into a keyed archive's table.
  struct UID {
    std::uint64_t value = 0;
    bool operator==(const UID&) const = default;
  };
  struct Array {
    std::vector<Index> elements;
    bool operator==(const Array&) const = default;
  };
  struct Member {
    Index key;  ///< a string
    Index value;
    bool operator==(const Member&) const = default;
  };
  /// In the stored order; equal keys are kept.
  struct Dictionary {
    std::vector<Member> members;
    bool operator==(const Dictionary&) const = default;
  };
  using Node = std::variant<bool, std::int64_t, std::uint64_t, double, Date, Data, std::string, UID,
                            Array, Dictionary>;

  std::size_t size() const { return nodes_.size(); }
  /// How many indices the containers hold together. A walk that looks at more of them has met
  /// shared objects.
  std::size_t referenceCount() const;
  /// Meaningful once the table is not empty.
  Index root() const { return root_; }
  void setRoot(Index root) { root_ = root; }

  const Node& node(Index index) const { return nodes_[index]; }
  Kind kind(Index index) const { return static_cast<Kind>(nodes_[index].index()); }
  /// Null when another kind stands there.
  template <class T>
  const T* get(Index index) const {
    return std::get_if<T>(&nodes_[index]);
  }
  /// The text of a string; for the keys of dictionaries, which are always strings.
  const std::string& string(Index index) const { return std::get<std::string>(nodes_[index]); }

  /// The value under `key` in the dictionary at `index`, the last of equal ones; nothing when there
  /// is none, or no dictionary.
  std::optional<Index> find(Index index, std::string_view key) const;

  /// The integer at `index`, of either kind, when it is one and fits.
  std::optional<std::int64_t> integer(Index index) const;

  /// Adds an object and says where. A container may hold indices that are added later; they must be
  /// in the table before anybody reads it. Throws std::length_error when the table is full.
  Index add(Node node);
  void replace(Index index, Node node) { nodes_[index] = std::move(node); }

  /// The same table, not merely the same document.
  bool operator==(const PropertyList&) const = default;

 private:
  std::vector<Node> nodes_;
  Index root_ = 0;
};

/// What an object is called in messages: "a string".
std::string_view description(PropertyList::Kind kind);

/// What the readers throw, for the whole list: the platform's text, then the reason.
DecodingError invalidPropertyList(std::string_view reason);

}  // namespace tavlen
