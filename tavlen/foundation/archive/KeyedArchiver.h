#pragma once

#include <array>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/base/HashIndex.h"
#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Writes objects in the binary form of the platform's NSKeyedArchiver. Records use
/// encodeKeyedArchive().
///
/// Objects are numbered in pre-order: the object, its members in the order of writing, then its
/// class. Equal texts are one object. Every function returns the value to store under a key,
/// usually a UID. Throws EncodingError for a text that is not valid UTF-8 and for objects nested
/// more than `kDeepest` deep. Keys and class names must be constants: the views are kept.
class TAVLEN_API KeyedArchiver {
 public:
  /// An index in the property list.
  using Index = PropertyList::Index;

  /// Maximum nesting of objects.
  static constexpr std::size_t kDeepest = 512;

  /// An empty archive.
  KeyedArchiver();

  /// The value for nil.
  Index null() const { return null_; }
  /// Writes a text.
  Index text(std::string_view text);
  /// Writes a URL without a base.
  Index url(std::string_view absoluteString);
  /// Writes an array of `count` objects; `element(i)` writes and returns one. Throws EncodingError
  /// for a nil element.
  Index array(std::size_t count, FunctionRef<Index(std::size_t i)> element);
  /// Writes an object whose members `members` adds by member(). An object with an `identity` is
  /// written once, even if it contains itself; without one, each call writes a new object.
  Index object(std::string_view className, FunctionRef<void()> members,
               const void* identity = nullptr);

  /// A boolean is stored inline, without a UID, and is therefore not allowed in an array.
  Index boolean(bool value);

  /// Adds a member to the object that is being written by object().
  void member(std::string_view key, Index value);

  /// Returns the archive with the root `root`. The archiver must not be used afterwards.
  std::string finish(Index root);

 private:
  class Nesting;

  /// Reserves the next object number.
  std::size_t reserve();
  /// Appends `object` to the archive; returns the reference to it.
  Index add(Index object);
  /// Turns the members from `firstMember` on into a dictionary.
  Index takeMembers(std::size_t firstMember);
  Index key(std::string_view text);
  /// The reference to a class; writes the class at its first use.
  Index classNamed(std::string_view name);
  Index textOfNull();
  Index strings(std::initializer_list<std::string_view> texts);

  PropertyList list_;
  Index null_ = 0;
  std::vector<Index> objects_;                 ///< by object number
  std::vector<Index> references_;              ///< to the objects, by object number
  std::vector<PropertyList::Member> members_;  ///< of the unfinished objects
  std::size_t depth_ = 0;
  std::vector<std::pair<std::string_view, Index>> keys_;
  std::vector<std::pair<std::string_view, Index>> classes_;
  HashIndex texts_;                ///< by their indices in the list
  std::optional<Index> nullText_;  ///< the reference to the text "$null", once it is written
  std::array<std::optional<Index>, 2> booleans_;  ///< inline values of false and true
  std::unordered_map<const void*, Index> identities_;
};

}  // namespace tavlen
