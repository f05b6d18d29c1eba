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

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/coding/Date.h"

namespace tavlen {

/// A property list as a flat table: it holds each object once; containers hold indices into the
/// table.
///
/// Objects may be shared by several containers, be unreachable, or form a cycle, so a walk from the
/// root needs a limit. In a list that was read from a file, all indices are in range and all keys
/// of dictionaries are strings.
///
/// An object takes sixteen bytes; the texts, elements and members of all objects are stored
/// contiguously, so a table takes a handful of allocations. Accessors return views, which are valid
/// until the table changes. Nothing recurses, so lists of any depth can be built, read and
/// destroyed. A plain value; threads may make const calls concurrently.
class TAVLEN_API PropertyList {
 public:
  /// The position of an object in the table.
  using Index = std::uint32_t;

  /// The kinds of objects, in the order of Node's alternatives. Any integer that fits may be an
  /// `integer`. An `unsignedInteger` is above 2^63-1, or was stored in 16 bytes in the binary form,
  /// as the platform does for unsigned types of any value.
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

  /// A view of bytes.
  struct Data {
    std::string_view bytes;  ///< valid until the table changes
  };
  /// A number that refers to an object of a keyed archive's table.
  struct UID {
    std::uint64_t value = 0;  ///< the position in that table
  };
  /// A view of an array.
  struct Array {
    std::span<const Index> elements;  ///< valid until the table changes
  };
  /// A member of a dictionary.
  struct Member {
    Index key;    ///< a string
    Index value;  ///< any object
  };
  /// A view of a dictionary, in the stored order; equal keys are kept.
  struct Dictionary {
    std::span<const Member> members;  ///< valid until the table changes
  };
  /// An object as a view.
  using Node = std::variant<bool, std::int64_t, std::uint64_t, double, Date, Data, std::string_view,
                            UID, Array, Dictionary>;

  /// The identity of a scalar, comparable: reals and dates by their bits.
  struct Scalar {
    Kind kind;               ///< not a container
    std::uint64_t bits;      ///< of a number, date, boolean or UID
    std::string_view bytes;  ///< of a string or data
    bool operator==(const Scalar&) const = default;
  };

  /// The number of objects.
  std::size_t size() const { return objects_.size(); }
  /// The elements of all arrays.
  std::span<const Index> allElements() const { return elements_; }
  /// The members of all dictionaries.
  std::span<const Member> allMembers() const { return members_; }
  /// The bytes of all strings and data, of which the views of them are parts.
  std::string_view allBytes() const { return bytes_; }
  /// The number of indices that all containers hold together. A walk that follows more of them has
  /// met shared objects.
  std::size_t referenceCount() const { return elements_.size() + 2 * members_.size(); }
  /// The number of bytes of all strings and data together.
  std::size_t byteCount() const { return bytes_.size(); }
  /// The bytes that the table takes, room for more included.
  std::size_t memory() const;

  /// The root object. Unspecified while the table is empty.
  Index root() const { return root_; }
  /// Sets the root object.
  void setRoot(Index root) { root_ = root; }

  /// The kind of the object at `index`, which must be in range, as for all accessors.
  Kind kind(Index index) const { return objects_[index].kind; }
  /// The object at `index`.
  Node node(Index index) const;
  /// The object at `index` as a T; nothing when it is of another kind.
  template <class T>
  std::optional<T> get(Index index) const;
  /// The text of the string at `index`, which must be a string, as the keys of dictionaries are.
  std::string_view string(Index index) const { return bytes(objects_[index]); }
  /// Begins to load the object at `index` into the caches, for a reader that soon needs it.
  void prefetch(Index index) const { __builtin_prefetch(&objects_[index]); }
  /// The same for the members of a dictionary. Waits for the object itself.
  void prefetchMembers(Index index) const {
    if (kind(index) == Kind::dictionary) __builtin_prefetch(members_.data() + objects_[index].bits);
  }
  /// The identity of the object at `index`, which must not be a container.
  Scalar scalar(Index index) const;

  /// The value under `key` in the dictionary at `index`; the last one of equal keys. Nothing when
  /// there is no such key or no dictionary.
  std::optional<Index> find(Index index, std::string_view key) const;

  /// The string under `key` in the dictionary at `index`; nothing without one.
  std::optional<std::string_view> findString(Index index, std::string_view key) const;

  /// The integer at `index`, of either integer kind; nothing when it is out of range or another
  /// kind.
  std::optional<std::int64_t> integer(Index index) const;

  /// Appends a copy of `node`, which must not refer to this table, and returns its index. A
  /// container may hold indices of objects that are added later, as long as they are added before
  /// it is read. Throws std::length_error when the table is full.
  Index add(const Node& node);

  /// The capacity of a table's stores: counts of objects, bytes, elements and members.
  struct Room {
    std::size_t objects;   ///< of any kind
    std::size_t bytes;     ///< of strings and data
    std::size_t elements;  ///< of arrays
    std::size_t members;   ///< of dictionaries
  };
  /// Reserves capacity for at least `room`.
  void reserve(const Room& room);

 private:
  /// An object. `bits` is the value of a scalar; for other kinds it is the offset of the object's
  /// `count` parts in the store of that kind.
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

/// The kind with an article, for messages: "a string".
TAVLEN_API std::string_view description(PropertyList::Kind kind);

/// The error for a list that cannot be read: the platform's text, followed by `reason`.
TAVLEN_API DecodingError invalidPropertyList(std::string_view reason);

}  // namespace tavlen
