#pragma once

#include <array>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/base/HashIndex.h"
#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Writes objects in the form of the platform's NSKeyedArchiver, in binary; encodeKeyedArchive() is
/// what records use.
///
/// An object has its number from when it is met; its members follow in the order of their writing,
/// then its class. Equal texts are one object. What each function gives is the value that stands
/// for the object under a key. Errors are EncodingErrors: a text that is no valid UTF-8, objects
/// more than `kDeepest` deep. Keys and names of classes are constants: the views are kept.
class KeyedArchiver {
 public:
  using Index = PropertyList::Index;

  static constexpr std::size_t kDeepest = 512;

  KeyedArchiver();

  /// The absent object.
  Index null() const { return null_; }
  Index text(std::string_view text);
  /// A URL without a base.
  Index url(std::string_view absoluteString);
  Index array(std::size_t count, FunctionRef<Index(std::size_t i)> element);
  /// An object that `members` writes by member(). The object that stands behind an `identity` is
  /// written once, even if it holds itself; without one each call writes an object.
  Index object(std::string_view className, FunctionRef<void()> members,
               const void* identity = nullptr);

  /// It stands under its key itself: it is no object, which arrays hold.
  Index boolean(bool value);

  /// Within object(): the next member.
  void member(std::string_view key, Index value);

  /// The archive whose root is `root`. The archiver is spent afterwards.
  std::string finish(Index root);

 private:
  class Inside;

  /// A number for an object that follows.
  std::size_t reserve();
  /// Gives the reference to it.
  Index add(Index object);
  /// Makes the dictionary of the members from `firstMember` on.
  Index takeMembers(std::size_t firstMember);
  Index key(std::string_view text);
  /// The reference to the class, which is written when it is met first.
  Index classNamed(std::string_view name);
  Index textOfNull();
  Index strings(std::initializer_list<std::string_view> texts);

  PropertyList list_;
  Index null_ = 0;
  std::vector<Index> objects_;                 ///< by number
  std::vector<Index> references_;              ///< to them
  std::vector<PropertyList::Member> members_;  ///< of the objects that are open
  std::size_t depth_ = 0;
  std::vector<std::pair<std::string_view, Index>> keys_;
  std::vector<std::pair<std::string_view, Index>> classes_;
  HashIndex texts_;                ///< texts, by their places in the list
  std::optional<Index> nullText_;  ///< the reference to the text that means nil elsewhere
  std::array<std::optional<Index>, 2> booleans_;  ///< false and true
  std::unordered_map<const void*, Index> identities_;
};

}  // namespace tavlen
