#include "tavlen/foundation/archive/KeyedUnarchiver.h"

#include <algorithm>
#include <array>
#include <limits>

namespace tavlen {

namespace {

using Index = PropertyList::Index;

constexpr std::string_view kRootKey = "root";
/// The targets of a value that refers to no object, and of a reference to nil. No list is so long.
constexpr Index kNoObject = std::numeric_limits<Index>::max();
constexpr Index kNil = kNoObject - 1;

DecodingError invalidArchive(std::string_view reason) {
  return DecodingError::dataCorrupted("The data is not a keyed archive. " + std::string(reason));
}

std::string ofClass(std::string_view name) {
  return "an object of the class \"" + std::string(name) + "\"";
}

std::string_view stringUnder(const PropertyList& list, Index dictionary, std::string_view key) {
  const auto value = list.find(dictionary, key);
  if (!value) return {};
  return list.get<std::string_view>(*value).value_or(std::string_view());
}

}  // namespace

/// RAII nesting counter.
class KeyedUnarchiver::Nesting {
 public:
  explicit Nesting(KeyedUnarchiver& unarchiver) : unarchiver_(unarchiver) {
    if (unarchiver_.depth_ == kDeepest) {
      throw DecodingError::dataCorrupted("nested deeper than " + std::to_string(kDeepest) +
                                         " objects");
    }
    ++unarchiver_.depth_;
  }
  ~Nesting() { --unarchiver_.depth_; }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;

 private:
  KeyedUnarchiver& unarchiver_;
};

KeyedUnarchiver::KeyedUnarchiver(const PropertyList& list) : list_(list), budget_(list) {
  if (stringUnder(list, list.root(), "$archiver") != "NSKeyedArchiver") {
    throw invalidArchive("Its archiver is not NSKeyedArchiver.");
  }
  const auto version = list.find(list.root(), "$version");
  if (!version || list.integer(*version) != 100000) throw invalidArchive("Its version is unknown.");
  const auto objects = list.find(list.root(), "$objects");
  const auto array = objects ? list.get<PropertyList::Array>(*objects) : std::nullopt;
  if (!array) throw invalidArchive("It has no objects.");
  objects_ = array->elements;
  const auto top = list.find(list.root(), "$top");
  const auto root = top ? list.find(*top, kRootKey) : std::nullopt;
  if (!root) throw invalidArchive("It has no root.");
  root_ = *root;
  resolveReferences();
  countReferences();
}

void KeyedUnarchiver::resolveReferences() {
  std::vector<Index> nils;  // usually one
  for (Index i = 0; i < list_.size(); ++i) {
    if (list_.get<std::string_view>(i) == "$null") nils.push_back(i);
  }
  budget_.chargeBytes(list_.size() * (sizeof(Index) + sizeof(std::uint8_t)));
  targets_.assign(list_.size(), kNoObject);
  for (Index i = 0; i < list_.size(); ++i) {
    const auto reference = list_.get<PropertyList::UID>(i);
    if (!reference || reference->value >= objects_.size()) continue;
    const Index object = objects_[static_cast<std::size_t>(reference->value)];
    const bool isNil =
        reference->value == 0 || std::binary_search(nils.begin(), nils.end(), object);
    targets_[i] = isNil ? kNil : object;
  }
}

void KeyedUnarchiver::countReferences() {
  references_.resize(list_.size());
  const auto meet = [&](Index value) {
    const Index object = targets_[value];
    if (object >= kNil) return;
    std::uint8_t& count = references_[object];
    if (count < 2) ++count;
  };
  for (const Index element : list_.allElements()) meet(element);
  for (const PropertyList::Member& member : list_.allMembers()) meet(member.value);
}

std::optional<Index> KeyedUnarchiver::object(Index value) const {
  const Index object = targets_[value];
  if (object < kNil) return object;
  if (object == kNil) return std::nullopt;
  const auto reference = list_.get<PropertyList::UID>(value);
  if (!reference) {
    throw DecodingError::typeMismatch("a reference to an object", description(list_.kind(value)));
  }
  if (reference->value == 0) return std::nullopt;  // of an archive without objects
  throw DecodingError::dataCorrupted("the archive has no object " +
                                     std::to_string(reference->value));
}

bool KeyedUnarchiver::isKind(Index classObject, std::string_view className) {
  const std::pair<Index, std::string_view> kind{classObject, className};
  if (std::find(kinds_.begin(), kinds_.end(), kind) != kinds_.end()) return true;
  if (const auto dictionary = list_.get<PropertyList::Dictionary>(classObject)) {
    budget_.chargeVisits(2 * dictionary->members.size());
  }
  bool isKind = stringUnder(list_, classObject, "$classname") == className;
  const auto classes = list_.find(classObject, "$classes");
  const auto chain = classes ? list_.get<PropertyList::Array>(*classes) : std::nullopt;
  if (!isKind && chain) {
    budget_.chargeVisits(chain->elements.size());
    isKind = std::any_of(chain->elements.begin(), chain->elements.end(), [&](Index name) {
      return list_.get<std::string_view>(name) == className;
    });
  }
  // A normal archive has few classes. Without a limit, a hostile one would make each search longer.
  constexpr std::size_t kMostKinds = 16;
  if (isKind && kinds_.size() < kMostKinds) kinds_.push_back(kind);
  return isKind;
}

PropertyList::Dictionary KeyedUnarchiver::dictionary(Index object, std::string_view className) {
  const auto dictionary = list_.get<PropertyList::Dictionary>(object);
  if (!dictionary) {
    throw DecodingError::typeMismatch(ofClass(className), description(list_.kind(object)));
  }
  budget_.chargeVisits(2 * dictionary->members.size() + 1);
  return *dictionary;
}

Index KeyedUnarchiver::checkedClass(std::optional<Index> reference, std::string_view className) {
  if (!reference) throw DecodingError::keyNotFound("$class");
  const auto classObject = underKey("$class", [&] { return object(*reference); });
  if (classObject && isKind(*classObject, className)) return *classObject;
  const auto name =
      classObject ? stringUnder(list_, *classObject, "$classname") : std::string_view();
  throw DecodingError::typeMismatch(ofClass(className), ofClass(name));
}

void KeyedUnarchiver::check(Index object, std::string_view className) {
  dictionary(object, className);
  checkedClass(list_.find(object, "$class"), className);
}

KeyedUnarchiver::Shape KeyedUnarchiver::shape(std::span<const PropertyList::Member> members,
                                              std::string_view className,
                                              std::span<const Field> fields) const {
  Shape shape;
  shape.className = className;
  shape.fields = fields.data();
  shape.places.fill(kAbsent);
  for (std::size_t i = 0; i < members.size(); ++i) {  // of equal keys, the last one counts
    const std::string_view key = list_.string(members[i].key);
    if (key == "$class") shape.classPlace = static_cast<Index>(i);
    for (std::size_t field = 0; field < fields.size(); ++field) {
      if (fields[field].key == key) shape.places[field] = static_cast<Index>(i);
    }
  }
  return shape;
}

KeyedUnarchiver::Shape& KeyedUnarchiver::shapeOf(std::span<const PropertyList::Member> members,
                                                 std::string_view className,
                                                 std::span<const Field> fields, Shape& made) {
  const auto sameKey = [](const PropertyList::Member& member, Index key) {
    return member.key == key;
  };
  for (Shape& shape : shapes_) {
    if (shape.fields == fields.data() && shape.className.data() == className.data() &&
        std::equal(members.begin(), members.end(), shape.keys.begin(), shape.keys.end(), sameKey)) {
      return shape;
    }
  }
  made = shape(members, className, fields);
  // A normal archive has few shapes, of few keys. Without limits, a hostile one would make each
  // search longer.
  constexpr std::size_t kMostShapes = 16;
  if (shapes_.size() == kMostShapes || members.size() > 2 * kMostFields) return made;
  for (const PropertyList::Member& member : members) made.keys.push_back(member.key);
  return shapes_.emplace_back(std::move(made));
}

void KeyedUnarchiver::readMembers(Index object, std::string_view className,
                                  std::span<const Field> fields, Index* values) {
  const auto members = dictionary(object, className).members;
  Shape made;
  Shape& shape = shapeOf(members, className, fields, made);
  const auto valueAt = [&](Index place) {
    return place == kAbsent ? std::nullopt : std::optional(members[place].value);
  };
  // The class is usually the same object each time.
  const auto classReference = valueAt(shape.classPlace);
  if (!classReference || shape.classObject == kAbsent ||
      targets_[*classReference] != shape.classObject) {
    shape.classObject = checkedClass(classReference, className);
  }
  for (std::size_t i = 0; i < fields.size(); ++i) {
    values[i] = valueAt(shape.places[i]).value_or(kAbsent);
  }
}

std::string_view KeyedUnarchiver::textOf(Index object) {
  budget_.chargeVisits(1);
  const auto plain = list_.get<std::string_view>(object);
  const std::string_view text = plain ? *plain : inlineText(object);
  budget_.chargeValue(text.size());
  return text;
}

std::string_view KeyedUnarchiver::text(Index object) {
  return budget_.chargedString(textOf(object));
}

SharedText KeyedUnarchiver::sharedText(Index object) {
  const std::string_view text = textOf(object);
  if (text.empty()) return {};
  const std::string_view all = list_.allBytes();
  if (texts_.empty()) {
    budget_.chargeBytes(all.size() + SharedText::kOwnBytes);
    texts_ = all;
  }
  return texts_.piece(static_cast<std::size_t>(text.data() - all.data()), text.size());
}

/// A mutable string is an object that contains its text.
std::string_view KeyedUnarchiver::inlineText(Index object) {
  constexpr std::string_view kExpected = "a string";
  if (list_.kind(object) != PropertyList::Kind::dictionary) {
    throw DecodingError::typeMismatch(kExpected, description(list_.kind(object)));
  }
  check(object, "NSString");
  const auto value = list_.find(object, "NS.string");
  if (!value) throw DecodingError::keyNotFound("NS.string");
  const auto text = list_.get<std::string_view>(*value);
  if (!text) throw DecodingError::typeMismatch(kExpected, description(list_.kind(*value)));
  return *text;
}

URL KeyedUnarchiver::url(Index object) {
  const Nesting nesting(*this);
  check(object, "NSURL");
  const auto relative = list_.find(object, "NS.relative");
  if (!relative) throw DecodingError::keyNotFound("NS.relative");
  const std::string_view text = underKey("NS.relative", [&] {
    const auto stored = this->object(*relative);
    if (!stored) throw DecodingError::valueNotFound("a string");
    return this->text(*stored);
  });
  const auto base = list_.find(object, "NS.base");
  return underKey("NS.base", [&] {
    const auto stored = base ? this->object(*base) : std::nullopt;
    if (!stored) return URL{std::string(text)};
    URL resolved = url(*stored).resolved(text);
    budget_.chargedText(resolved.absoluteString);
    return resolved;
  });
}

void KeyedUnarchiver::prefetch(Index value) const {
  if (const Index object = targets_[value]; object < kNil) list_.prefetch(object);
}

/// Loads what later elements of an array need, the dictionary's row before its members.
void KeyedUnarchiver::prefetchElement(std::span<const Index> elements) const {
  constexpr std::size_t kAhead = 4;
  if (elements.size() > 2 * kAhead) prefetch(elements[2 * kAhead]);
  if (elements.size() <= kAhead) return;
  if (const Index object = targets_[elements[kAhead]]; object < kNil) list_.prefetchMembers(object);
}

void KeyedUnarchiver::elements(Index object,
                               FunctionRef<void(Index element, std::size_t count)> element) {
  const Nesting nesting(*this);
  static constexpr std::array<Field, 1> kFields = {{{"NS.objects", nullptr}}};
  Index objects = kAbsent;
  readMembers(object, "NSArray", kFields, &objects);
  if (objects == kAbsent) return;
  const auto array = list_.get<PropertyList::Array>(objects);
  if (!array) throw DecodingError::typeMismatch("an array", description(list_.kind(objects)));
  budget_.chargeVisits(array->elements.size());
  budget_.chargeValue(0);
  for (std::size_t i = 0; i < array->elements.size(); ++i) {
    prefetchElement(array->elements.subspan(i));
    underIndex(i, [&] {
      const auto stored = this->object(array->elements[i]);
      if (!stored) throw DecodingError::valueNotFound("an object");
      element(*stored, array->elements.size());
    });
  }
}

void KeyedUnarchiver::record(Index object, std::string_view className,
                             std::span<const Field> fields, void* record) {
  const Nesting nesting(*this);
  std::array<Index, kMostFields> values;  // NOLINT(*-member-init): as many as there are fields
  readMembers(object, className, fields, values.data());
  // The objects of the fields are far apart in a large archive; load them at the same time.
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (values[i] != kAbsent) prefetch(values[i]);
  }
  for (std::size_t i = 0; i < fields.size(); ++i) {
    budget_.chargeValue(fields[i].key.size());  // of absent ones, too: most are written as empty
    if (values[i] == kAbsent) continue;
    underKey(fields[i].key, [&] { fields[i].decode(*this, values[i], record); });
  }
}

std::shared_ptr<void> KeyedUnarchiver::sharedResult(Index object, const void* type) {
  const auto found = sharedResults_.find({object, type});
  if (found == sharedResults_.end()) return nullptr;
  budget_.chargeExpansion(found->second.expansion);
  return found->second.value;
}

void KeyedUnarchiver::keepSharedResult(Index object, const void* type, std::shared_ptr<void> value,
                                       std::size_t expansionBefore) {
  sharedResults_[{object, type}] = {std::move(value), expansion() - expansionBefore};
}

bool KeyedUnarchiver::boolean(Index value) const {
  if (const auto flag = list_.get<bool>(value)) return *flag;
  const auto integer = list_.integer(value);
  if (!integer) throw DecodingError::typeMismatch("a boolean", description(list_.kind(value)));
  return *integer != 0;
}

}  // namespace tavlen
