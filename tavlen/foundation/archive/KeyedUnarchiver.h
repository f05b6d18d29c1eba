#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/files/URL.h"
#include "tavlen/foundation/plist/PropertyList.h"
#include "tavlen/foundation/plist/SharedReferenceBudget.h"

namespace tavlen {

/// Reads objects in the form of the platform's NSKeyedArchiver from a property list of either form;
/// decodeKeyedArchive() is what records use.
///
/// Nothing is made by the names in the archive: the caller says what it wants, and an object of
/// another class is an error; one of a subclass is taken, told by "$classes" ("$classhints" are not
/// looked at). An absent key, the reference 0 and the
/// string "$null" are nil. Errors are DecodingErrors, the path added on their way out.
///
/// Bounded, whatever the archive holds: `kDeepest` objects deep (which ends a cycle), and by
/// SharedReferenceBudget.
class KeyedUnarchiver {
 public:
  using Index = PropertyList::Index;

  static constexpr std::size_t kDeepest = limits::kPropertyListDepth;

  /// A row of a record's table.
  struct Field {
    std::string_view key;
    void (*decode)(KeyedUnarchiver& unarchiver, Index value, void* record);
  };
  static constexpr std::size_t kMostFields = 64;

  /// Keeps a reference to `list`. Throws dataCorrupted for what is no keyed archive.
  explicit KeyedUnarchiver(const PropertyList& list);

  /// The value that stands for the root, to be passed to the functions below.
  Index root() const { return root_; }

  /// The object that `value` refers to; nothing for nil. What follows is given such objects.
  std::optional<Index> object(Index value) const;

  /// Valid as long as the list.
  std::string_view text(Index object);
  /// A URL with a base is resolved against it.
  URL url(Index object);
  /// Calls `element` with each object of an array, of which none is nil, and with their number.
  void elements(Index object, FunctionRef<void(Index element, std::size_t count)> element);
  /// Reads an object of the class `className`, a constant, into `record` by its table. The fields
  /// of absent keys stay as they are.
  void record(Index object, std::string_view className, std::span<const Field> fields,
              void* record);

  /// It stands under its key itself. An integer is taken, too.
  bool boolean(Index value) const;

  /// Whether the archive holds several references to `object`.
  bool isShared(Index object) const { return references_[object] > 1; }
  /// Counts what the caller makes of an element against the limits.
  void chargeBytes(std::size_t count) { budget_.chargeBytes(count); }

  /// What was made of a shared object, for `type`, a mark of the caller's: null until somebody
  /// stores it.
  std::shared_ptr<void>& made(Index object, const void* type) { return made_[{object, type}]; }

 private:
  class Inside;

  void countReferences();

  /// The object's dictionary; it must be of the class or a class below it.
  PropertyList::Dictionary checked(Index object, std::string_view className);
  std::string_view inlineText(Index object);
  bool isKind(Index classObject, std::string_view className);

  const PropertyList& list_;
  std::span<const Index> objects_;
  Index root_ = 0;
  SharedReferenceBudget budget_;
  std::size_t depth_ = 0;
  /// The classes that objects were found to be of, as asked for.
  std::vector<std::pair<Index, std::string_view>> kinds_;
  std::vector<std::uint8_t> references_;  ///< by the index of the object, counted up to two
  std::map<std::pair<Index, const void*>, std::shared_ptr<void>> made_;
};

}  // namespace tavlen
