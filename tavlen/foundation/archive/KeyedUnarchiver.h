#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/files/URL.h"
#include "tavlen/foundation/plist/PropertyList.h"
#include "tavlen/foundation/plist/SharedReferenceBudget.h"
#include "tavlen/foundation/text/SharedText.h"

namespace tavlen {

/// Reads objects in the form of the platform's NSKeyedArchiver from a property list of either form.
/// Records use decodeKeyedArchive().
///
/// An archive stores objects in one table, "$objects"; values under keys refer to them by UID. An
/// absent key, the UID 0 and the string "$null" are nil. The caller names the class that it
/// expects: an object of another class is an error, one of a subclass, according to "$classes", is
/// accepted. Class names in the archive never create anything, and "$classhints" are ignored.
/// Throws DecodingError; its path is completed while it propagates.
///
/// The work is limited for any archive, and so is the size of what is read, written as a tree: by
/// `kDeepest` nested objects (which ends a cycle) and by SharedReferenceBudget.
class TAVLEN_API KeyedUnarchiver {
 public:
  /// An index in the property list.
  using Index = PropertyList::Index;

  /// Maximum nesting of objects.
  static constexpr std::size_t kDeepest = limits::kPropertyListDepth;

  /// A row of a record's field table.
  struct Field {
    /// The field's key.
    std::string_view key;
    /// Decodes the stored `value` into the field of `record`.
    void (*decode)(KeyedUnarchiver& unarchiver, Index value, void* record);
  };
  /// Maximum number of fields of a record.
  static constexpr std::size_t kMostFields = 64;

  /// Keeps a reference to `list`, which must outlive it. Throws dataCorrupted when `list` is not a
  /// keyed archive.
  explicit KeyedUnarchiver(const PropertyList& list);

  /// The reference to the root, for object().
  Index root() const { return root_; }

  /// The object to which `value` refers; nothing for nil. The functions below take such objects.
  std::optional<Index> object(Index value) const;

  /// Reads a text. Valid as long as the list.
  std::string_view text(Index object);
  /// Reads a text that outlives the list: a piece of one copy of all texts of the archive, which
  /// the first call makes. The copy lives as long as any of them.
  SharedText sharedText(Index object);
  /// Reads a URL, resolved against its base if it has one.
  URL url(Index object);
  /// Reads an array: calls `element` with each object, none of which is nil, and the number of
  /// elements.
  void elements(Index object, FunctionRef<void(Index element, std::size_t count)> element);
  /// Reads an object of the class `className`, a constant, into `record` by its table. Fields
  /// without a key keep their values.
  void record(Index object, std::string_view className, std::span<const Field> fields,
              void* record);

  /// Reads a boolean, which is stored inline. An integer is accepted as well.
  bool boolean(Index value) const;

  /// Whether the archive contains several references to `object`.
  bool isShared(Index object) const { return references_[object] > 1; }
  /// Charges for memory that the caller allocates for an element. Throws DecodingError.
  void chargeBytes(std::size_t count) { budget_.chargeBytes(count); }

  /// What the values read so far take, written out.
  std::size_t expansion() const { return budget_.expansion(); }
  /// The value that the caller has decoded from a shared object, for reuse, charged once more; null
  /// until keepSharedResult(). `type` is any address that identifies the caller's type. Throws
  /// DecodingError.
  std::shared_ptr<void> sharedResult(Index object, const void* type);
  /// Keeps `value`, which `object` became. `expansionBefore` is expansion() before it was read.
  void keepSharedResult(Index object, const void* type, std::shared_ptr<void> value,
                        std::size_t expansionBefore);

 private:
  class Nesting;
  /// A value that has been decoded from a shared object.
  struct SharedResult {
    std::shared_ptr<void> value;
    std::size_t expansion = 0;  ///< what it takes, written out
  };

  /// No value, place or object.
  static constexpr Index kAbsent = std::numeric_limits<Index>::max();

  /// Where dictionaries with one list of keys have the fields of a table. The objects of a class
  /// usually have the same keys, so comparing the indices of these replaces comparing texts.
  struct Shape {
    std::string_view className;             ///< the constant that names the class
    const Field* fields = nullptr;          ///< the table
    std::vector<Index> keys;                ///< of the dictionaries, when the shape is kept
    Index classPlace = kAbsent;             ///< of "$class" among them
    Index classObject = kAbsent;            ///< the one that was last found to be of the class
    std::array<Index, kMostFields> places;  ///< of the fields among the keys
  };

  void resolveReferences();
  void countReferences();

  /// The object's dictionary, of any class.
  PropertyList::Dictionary dictionary(Index object, std::string_view className);
  /// The class object to which `reference` refers. Throws unless it is the class or a subclass.
  Index checkedClass(std::optional<Index> reference, std::string_view className);
  /// Throws unless the object is of the class or of a subclass.
  void check(Index object, std::string_view className);
  /// The same, and writes to `values` the value of each field, or kAbsent.
  void readMembers(Index object, std::string_view className, std::span<const Field> fields,
                   Index* values);
  Shape shape(std::span<const PropertyList::Member> members, std::string_view className,
              std::span<const Field> fields) const;
  /// The kept shape of `members`, or `made`, which it makes.
  Shape& shapeOf(std::span<const PropertyList::Member> members, std::string_view className,
                 std::span<const Field> fields, Shape& made);
  /// Begins to load the object to which `value` refers.
  void prefetch(Index value) const;
  void prefetchElement(std::span<const Index> elements) const;
  std::string_view textOf(Index object);
  std::string_view inlineText(Index object);
  bool isKind(Index classObject, std::string_view className);

  const PropertyList& list_;
  std::span<const Index> objects_;
  Index root_ = 0;
  SharedReferenceBudget budget_;
  std::size_t depth_ = 0;
  /// Pairs of class objects and names that isKind() has found to match.
  std::vector<std::pair<Index, std::string_view>> kinds_;
  /// The object to which each value of the list refers, or kNil or kNoObject. Looking up the
  /// reference, the object and whether it is "$null" would wait for memory three times.
  std::vector<Index> targets_;
  /// The number of references to an object, by its index; counts up to two.
  std::vector<std::uint8_t> references_;
  std::vector<Shape> shapes_;
  /// By object and type.
  std::map<std::pair<Index, const void*>, SharedResult> sharedResults_;
  SharedText texts_;  ///< a copy of PropertyList::allBytes(), once it is needed
};

}  // namespace tavlen
