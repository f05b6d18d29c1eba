#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/coding/Date.h"

namespace tavlen {

/// A property list as a flat table: every object once, containers hold indices into the table.
///
/// Objects may be shared by several containers, may be reached by nobody, and may form a cycle;
/// whoever walks from the root needs a limit. In a list that was read, the indices that containers
/// hold are in range and the keys of dictionaries are strings.
///
/// An object takes sixteen bytes, and its text, elements or members lie side by side with those of
/// all others, so a table is a handful of allocations. What is given out of them are views: valid
/// until the table changes. Nothing here recurses, so any depth can be built, read and destroyed.
/// It is a plain value; const calls may run side by side.
class PropertyList {
 public:
  using Index = std::uint32_t;

  /// In the order of Node's alternatives. Any integer that fits may be an `integer`; an
  /// `unsignedInteger` is above 2^63-1, or was stored in the binary form's 16 bytes, as the
  /// platform does with unsigned types whatever their value.
  enum class Kind : std::uint8_t {
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
    std::string_view bytes;
  };
  /// A number that points into a keyed archive's table.
  struct UID {
    std::uint64_t value = 0;
  };
  struct Array {
    std::span<const Index> elements;
  };
  struct Member {
    Index key;  ///< a string
    Index value;
  };
  /// In the stored order; equal keys are kept.
  struct Dictionary {
    std::span<const Member> members;
  };
  /// An object as a view.
  using Node = std::variant<bool, std::int64_t, std::uint64_t, double, Date, Data, std::string_view,
                            UID, Array, Dictionary>;

  /// What tells one scalar from another: reals and dates by their bits.
  struct Scalar {
    Kind kind;
    std::uint64_t bits;
    std::string_view bytes;
    bool operator==(const Scalar&) const = default;
  };

  std::size_t size() const { return objects_.size(); }
  /// The elements of all arrays, and the members of all dictionaries.
  std::span<const Index> allElements() const { return elements_; }
  std::span<const Member> allMembers() const { return members_; }
  /// How many indices the containers hold together. A walk that looks at more of them has met
  /// shared objects.
  std::size_t referenceCount() const { return elements_.size() + 2 * members_.size(); }
  /// The bytes of all strings and data together.
  std::size_t byteCount() const { return bytes_.size(); }
  /// The bytes that the table takes, room for more included.
  std::size_t memory() const;

  /// Meaningful once the table is not empty.
  Index root() const { return root_; }
  void setRoot(Index root) { root_ = root; }

  Kind kind(Index index) const { return objects_[index].kind; }
  Node node(Index index) const;
  /// Nothing when another kind stands there.
  template <class T>
  std::optional<T> get(Index index) const;
  /// The text of a string; for the keys of dictionaries, which are always strings.
  std::string_view string(Index index) const { return bytes(objects_[index]); }
  /// For an object that is no container.
  Scalar scalar(Index index) const;

  /// The value under `key` in the dictionary at `index`, the last of equal ones; nothing when there
  /// is none, or no dictionary.
  std::optional<Index> find(Index index, std::string_view key) const;

  /// The string under `key` in the dictionary at `index`; nothing when there is none.
  std::optional<std::string_view> findString(Index index, std::string_view key) const;

  /// The integer at `index`, of either kind, when it is one and fits.
  std::optional<std::int64_t> integer(Index index) const;

  /// Adds a copy of what `node` views, which must not lie in this table, and says where. A
  /// container may hold indices that are added later; they must be in the table before anybody
  /// reads it. Throws std::length_error when the table is full.
  Index add(const Node& node);

  /// How much there is, or may come to be, of what a table holds.
  struct Room {
    std::size_t objects;
    std::size_t bytes;
    std::size_t elements;
    std::size_t members;
  };
  void reserve(const Room& room);

 private:
  /// `bits` is a scalar's value, or where in the vector of its kind the object's `count` parts
  /// begin.
  struct Object {
    std::uint64_t bits;
    std::uint32_t count;
    Kind kind;
  };

  std::string_view bytes(const Object& object) const {
    return std::string_view(bytes_).substr(static_cast<std::size_t>(object.bits), object.count);
  }

  std::vector<Object> objects_;
  std::string bytes_;
  std::vector<Index> elements_;
  std::vector<Member> members_;
  Index root_ = 0;
};

template <class T>
std::optional<T> PropertyList::get(Index index) const {
  constexpr auto kKind = static_cast<Kind>(Node(std::in_place_type<T>).index());
  if (kind(index) != kKind) return std::nullopt;
  const Object& object = objects_[index];
  if constexpr (kKind == Kind::string) {
    return bytes(object);
  } else if constexpr (kKind == Kind::array) {
    return Array{std::span(elements_).subspan(static_cast<std::size_t>(object.bits), object.count)};
  } else if constexpr (kKind == Kind::dictionary) {
    return Dictionary{
        std::span(members_).subspan(static_cast<std::size_t>(object.bits), object.count)};
  } else if constexpr (kKind == Kind::uid) {
    return UID{object.bits};
  } else {
    return std::get<T>(node(index));
  }
}

/// What an object is called in messages: "a string".
std::string_view description(PropertyList::Kind kind);

/// What the readers throw, for the whole list: the platform's text, then the reason.
DecodingError invalidPropertyList(std::string_view reason);

}  // namespace tavlen
