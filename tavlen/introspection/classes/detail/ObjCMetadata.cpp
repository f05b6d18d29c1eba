#include "tavlen/introspection/classes/detail/ObjCMetadata.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

using Kind = MachOImage::Pointer::Kind;

// The layouts are those of the run time's <objc-runtime-new.h>, with offsets in bytes.
constexpr std::uint64_t kPointerSize = 8;

namespace ClassRecord {
constexpr std::uint64_t kSize = 40;
constexpr std::uint64_t kMetaclass = 0;
constexpr std::uint64_t kSuperclass = 8;
constexpr std::uint64_t kData = 32;
/// Flags for Swift in the low bits of the pointer to the data.
constexpr std::uint64_t kDataFlags = 7;
}  // namespace ClassRecord

namespace ClassData {
constexpr std::uint64_t kSize = 72;
constexpr std::uint64_t kName = 24;
constexpr std::uint64_t kMethods = 32;
constexpr std::uint64_t kProtocols = 40;
constexpr std::uint32_t kIsRoot = 2;
}  // namespace ClassData

namespace CategoryRecord {
constexpr std::uint64_t kSize = 48;
constexpr std::uint64_t kName = 0;
constexpr std::uint64_t kClass = 8;
constexpr std::uint64_t kInstanceMethods = 16;
constexpr std::uint64_t kClassMethods = 24;
constexpr std::uint64_t kProtocols = 32;
}  // namespace CategoryRecord

namespace MethodList {
constexpr std::uint64_t kHeaderSize = 8;
constexpr std::uint32_t kIsRelative = 0x80000000;
/// Offsets that count from a table which only the system's shared cache has.
constexpr std::uint32_t kNeedsCache = 0x60000000;
constexpr std::uint32_t kElementSize = 0xFFFC;
constexpr std::uint64_t kElement = 24;
constexpr std::uint64_t kRelativeElement = 12;
}  // namespace MethodList

constexpr std::uint64_t kProtocolName = 8;

/// The initial word of a Swift class whose record is made when the program runs; those of classes
/// are addresses, or 0 where the loader fills in an imported one.
constexpr std::uint64_t kStub = 1;

/// What references take of the budget: more than the bytes that they lead to, because each may
/// become a larger record, and less than an image has where everything is referred to once.
constexpr std::uint64_t kClassCost = 8 * (ClassRecord::kSize + ClassData::kSize);
constexpr std::uint64_t kMethodCost = 8 * MethodList::kElement;
constexpr std::uint64_t kProtocolCost = 12 * kPointerSize;

constexpr std::string_view kClassSymbol = "_OBJC_CLASS_$_";
constexpr std::string_view kProtocolSymbol = "__OBJC_PROTOCOL_$_";

std::optional<std::string_view> nameInSymbol(std::string_view symbol, std::string_view prefix) {
  if (!symbol.starts_with(prefix)) return std::nullopt;
  return symbol.substr(prefix.size());
}

std::string hexadecimal(std::uint64_t value) {
  std::array<char, 16> digits{};
  const auto end = std::to_chars(digits.begin(), digits.end(), value, 16).ptr;
  return "0x" + std::string(digits.begin(), end);
}

}  // namespace

ObjCMetadata::ObjCMetadata(const MachOImage& image) : image_(image), memory_(image.memory()) {
  // Each record is looked at once, or a few times where records share lists and texts.
  constexpr std::uint64_t kBytesPerByte = 16;
  constexpr std::uint64_t kBytes = std::uint64_t{1} << 20;
  budget_ = kBytes + kBytesPerByte * image.slice().size;
  if (!image.fixupsFault().empty()) report("the image", image.fixupsFault());
  classes_ = pointersIn("__objc_classlist");
  std::vector<std::uint64_t> categories = pointersIn("__objc_catlist");
  // Those of Swift classes whose records are made when the program runs.
  const std::vector<std::uint64_t> more = pointersIn("__objc_catlist2");
  categories.insert(categories.end(), more.begin(), more.end());
  if (categories.empty()) return;
  std::vector<std::uint64_t> sorted = classes_;
  std::sort(sorted.begin(), sorted.end());
  for (const std::uint64_t category : categories) {
    if (category != 0) readCategory(category, sorted);
  }
  std::sort(ownCategories_.begin(), ownCategories_.end(),
            [](const OwnCategory& left, const OwnCategory& right) {
              return std::pair(left.classAddress, left.number) <
                     std::pair(right.classAddress, right.number);
            });
}

std::vector<std::uint64_t> ObjCMetadata::pointersIn(std::string_view section) {
  std::vector<std::uint64_t> addresses;
  for (const MachOImage::Section& each : image_.sections()) {
    if (each.name != section) continue;
    const std::uint64_t size = std::min(each.size, memory_.sizeAt(each.address));
    if (size < each.size) report(section, "is cut off");
    const std::uint64_t count = size / kPointerSize;
    if (!spend(size)) break;
    addresses.reserve(addresses.size() + count);
    for (std::uint64_t i = 0; i < count; ++i) {
      const Pointer pointer = image_.pointerAt(each.address + i * kPointerSize);
      const bool isAddress = pointer.kind == Kind::address;
      if (!isAddress) {
        report(std::string(section) + " " + std::to_string(i), "leads nowhere");
      }
      addresses.push_back(isAddress ? pointer.address : 0);
    }
  }
  return addresses;
}

void ObjCMetadata::readCategory(std::uint64_t address,
                                const std::vector<std::uint64_t>& sortedClasses) {
  if (!spend(CategoryRecord::kSize)) return;
  const std::string place = "the category at " + hexadecimal(address);
  const auto name = textAt(image_.pointerAt(address + CategoryRecord::kName));
  if (!name) return report(place, "has no readable name");
  Lists lists;
  lists.instanceMethods = listAt(address + CategoryRecord::kInstanceMethods, place, "methods");
  lists.classMethods = listAt(address + CategoryRecord::kClassMethods, place, "class methods");
  lists.protocols = listAt(address + CategoryRecord::kProtocols, place, "protocols");
  const Pointer cls = image_.pointerAt(address + CategoryRecord::kClass);
  const bool isOwn = cls.kind == Kind::address &&
                     std::binary_search(sortedClasses.begin(), sortedClasses.end(), cls.address);
  if (isOwn) {
    const auto number = static_cast<std::uint32_t>(ownCategories_.size());
    ownCategories_.push_back({cls.address, number, lists});
    return;
  }
  std::optional<std::string_view> className;
  if (cls.kind == Kind::symbol) className = nameInSymbol(cls.symbol, kClassSymbol);
  if (cls.kind == Kind::address && memory_.numberAt<std::uint64_t>(cls.address) != kStub) {
    className = nameOf(cls.address);
  }
  if (!className) return report(place, "belongs to a class that cannot be read");
  categories_.push_back({*name, *className, lists});
}

std::pair<const ObjCMetadata::OwnCategory*, const ObjCMetadata::OwnCategory*>
ObjCMetadata::categoriesOf(const Class& cls) const {
  const auto first = std::lower_bound(ownCategories_.begin(), ownCategories_.end(), cls.address,
                                      [](const OwnCategory& category, std::uint64_t address) {
                                        return category.classAddress < address;
                                      });
  auto last = first;
  while (last != ownCategories_.end() && last->classAddress == cls.address) ++last;
  const OwnCategory* const start = ownCategories_.data();
  return {start + (first - ownCategories_.begin()), start + (last - ownCategories_.begin())};
}

std::optional<ObjCMetadata::ReadOnly> ObjCMetadata::readOnlyOf(std::uint64_t cls) {
  if (!spend(kClassCost)) return std::nullopt;
  const Pointer data = image_.pointerAt(cls + ClassRecord::kData);
  if (data.kind != Kind::address) return std::nullopt;
  const std::uint64_t address = data.address & ~ClassRecord::kDataFlags;
  if (memory_.sizeAt(address) < ClassData::kSize) return std::nullopt;
  return ReadOnly{memory_.numberAt<std::uint32_t>(address).value_or(0), address};
}

std::optional<std::string_view> ObjCMetadata::textAt(const Pointer& pointer) {
  if (pointer.kind != Kind::address) return std::nullopt;
  const std::optional<std::string_view> text = memory_.textAt(pointer.address);
  if (!text || !spend(text->size())) return std::nullopt;
  return text;
}

std::optional<std::string_view> ObjCMetadata::nameOf(std::uint64_t cls) {
  const std::optional<ReadOnly> data = readOnlyOf(cls);
  if (!data) return std::nullopt;
  return textAt(image_.pointerAt(data->address + ClassData::kName));
}

std::uint64_t ObjCMetadata::listAt(std::uint64_t address, std::string_view owner,
                                   std::string_view what) {
  const Pointer list = image_.pointerAt(address);
  // An odd address is a list of lists, which only the system's shared cache has.
  const bool isList = list.kind == Kind::address && (list.address & 1) == 0;
  if (isList) return list.address;
  if (list.kind != Kind::null) report(owner, "has an unreadable list of " + std::string(what));
  return 0;
}

ObjCMetadata::Superclass ObjCMetadata::superclassOf(std::uint64_t cls, const ReadOnly& data,
                                                    std::string_view name) {
  using Place = Superclass::Place;
  const Pointer pointer = image_.pointerAt(cls + ClassRecord::kSuperclass);
  if (pointer.kind == Kind::null) {
    // Swift's run time finds the superclass of a class whose own is generic, for example.
    return {(data.flags & ClassData::kIsRoot) != 0 ? Place::none : Place::unknown, {}, 0};
  }
  if (pointer.kind == Kind::symbol) {
    if (const auto imported = nameInSymbol(pointer.symbol, kClassSymbol)) {
      return {pointer.ordinal == 0 ? Place::here : Place::elsewhere, *imported, pointer.ordinal};
    }
  }
  if (pointer.kind == Kind::address) {
    if (const auto own = nameOf(pointer.address)) return {Place::here, *own, 0};
  }
  report(name, "has an unreadable superclass");
  return {Place::unknown, {}, 0};
}

std::optional<ObjCMetadata::Class> ObjCMetadata::classAt(std::size_t index) {
  const std::uint64_t address = classes_[index];
  if (address == 0) return std::nullopt;  // reported with the list
  const std::optional<ReadOnly> data = readOnlyOf(address);
  const auto name = data ? textAt(image_.pointerAt(data->address + ClassData::kName))
                         : std::optional<std::string_view>();
  if (!name) {
    report("the class at " + hexadecimal(address), data ? "has no readable name" : "is unreadable");
    return std::nullopt;
  }
  Class cls;
  cls.name = *name;
  cls.address = address;
  cls.superclass = superclassOf(address, *data, *name);
  cls.lists.instanceMethods = listAt(data->address + ClassData::kMethods, *name, "methods");
  cls.lists.protocols = listAt(data->address + ClassData::kProtocols, *name, "protocols");
  const Pointer metaclass = image_.pointerAt(address + ClassRecord::kMetaclass);
  const auto metadata =
      metaclass.kind == Kind::address ? readOnlyOf(metaclass.address) : std::optional<ReadOnly>();
  if (!metadata) {
    report(*name, "has an unreadable metaclass");
    return cls;
  }
  cls.lists.classMethods = listAt(metadata->address + ClassData::kMethods, *name, "class methods");
  return cls;
}

void ObjCMetadata::visitMethods(const Class& cls, FunctionRef<void(const Method&)> visit) {
  const auto [first, last] = categoriesOf(cls);
  for (const bool isClassMethod : {false, true}) {
    const MethodField field = isClassMethod ? &Lists::classMethods : &Lists::instanceMethods;
    for (const OwnCategory* category = last; category != first;) {
      visitList((--category)->lists.*field, cls.name, isClassMethod, visit);
    }
    visitList(cls.lists.*field, cls.name, isClassMethod, visit);
  }
}

void ObjCMetadata::visitMethods(const Category& category, FunctionRef<void(const Method&)> visit) {
  visitList(category.lists.instanceMethods, category.className, false, visit);
  visitList(category.lists.classMethods, category.className, true, visit);
}

void ObjCMetadata::visitList(std::uint64_t list, std::string_view owner, bool isClassMethod,
                             FunctionRef<void(const Method&)> visit) {
  if (list == 0) return;
  const std::string_view what = isClassMethod ? "class methods" : "methods";
  const auto fail = [&] { report(owner, "has an unreadable list of " + std::string(what)); };
  const auto flags = memory_.numberAt<std::uint32_t>(list);
  const auto count = memory_.numberAt<std::uint32_t>(list + sizeof(std::uint32_t));
  if (!flags || !count || memory_.sizeAt(list) < MethodList::kHeaderSize) return fail();
  const bool isRelative = (*flags & MethodList::kIsRelative) != 0;
  const std::uint64_t element = *flags & MethodList::kElementSize;
  const std::uint64_t least = isRelative ? MethodList::kRelativeElement : MethodList::kElement;
  const bool needsCache = isRelative && (*flags & MethodList::kNeedsCache) != 0;
  const std::uint64_t room = memory_.sizeAt(list) - MethodList::kHeaderSize;
  if (element < least || needsCache || *count > room / element) return fail();
  for (std::uint32_t i = 0; i < *count; ++i) {
    if (!spend(kMethodCost)) return;
    const std::uint64_t address = list + MethodList::kHeaderSize + i * element;
    Method method;
    method.isClassMethod = isClassMethod;
    switch (isRelative ? readRelativeMethod(address, method) : readMethod(address, method)) {
      case Entry::complete:
        visit(method);
        break;
      case Entry::withoutTypes:
        break;
      case Entry::unreadable:
        report(owner, "has an unreadable entry " + std::to_string(i) + " in its list of " +
                          std::string(what));
    }
  }
}

ObjCMetadata::Entry ObjCMetadata::complete(Method& method,
                                           const std::optional<std::string_view>& selector,
                                           const Pointer& types) {
  if (!selector) return Entry::unreadable;
  method.selector = *selector;
  if (types.kind == Kind::null) return Entry::withoutTypes;
  const auto encoding = textAt(types);
  if (!encoding) return Entry::unreadable;
  method.encoding = *encoding;
  return Entry::complete;
}

ObjCMetadata::Entry ObjCMetadata::readMethod(std::uint64_t address, Method& method) {
  return complete(method, textAt(image_.pointerAt(address)),
                  image_.pointerAt(address + kPointerSize));
}

ObjCMetadata::Entry ObjCMetadata::readRelativeMethod(std::uint64_t address, Method& method) {
  // Each offset counts from its own place, and 0 is a null pointer.
  const auto targetAt = [&](std::uint64_t place) {
    const std::uint32_t offset = memory_.numberAt<std::uint32_t>(place).value_or(0);
    const std::int64_t distance = static_cast<std::int32_t>(offset);
    if (distance == 0) return Pointer{};
    return Pointer{Kind::address, place + static_cast<std::uint64_t>(distance), {}, 0};
  };
  const Pointer slot = targetAt(address);  // holds the pointer to the selector
  if (slot.kind == Kind::null) return Entry::unreadable;
  return complete(method, textAt(image_.pointerAt(slot.address)),
                  targetAt(address + sizeof(std::uint32_t)));
}

std::vector<std::string_view> ObjCMetadata::protocolsOf(const Class& cls) {
  std::vector<std::string_view> names;
  const auto [first, last] = categoriesOf(cls);
  for (const OwnCategory* category = last; category != first;) {
    appendProtocols((--category)->lists.protocols, cls.name, names);
  }
  appendProtocols(cls.lists.protocols, cls.name, names);
  return names;
}

std::vector<std::string_view> ObjCMetadata::protocolsOf(const Category& category) {
  std::vector<std::string_view> names;
  appendProtocols(category.lists.protocols, category.className, names);
  return names;
}

void ObjCMetadata::appendProtocols(std::uint64_t list, std::string_view owner,
                                   std::vector<std::string_view>& names) {
  if (list == 0) return;
  const auto count = memory_.numberAt<std::uint64_t>(list);
  if (!count || *count > memory_.sizeAt(list) / kPointerSize - 1) {
    return report(owner, "has an unreadable list of protocols");
  }
  for (std::uint64_t i = 0; i < *count; ++i) {
    if (!spend(kProtocolCost)) return;
    const Pointer protocol = image_.pointerAt(list + (i + 1) * kPointerSize);
    if (protocol.kind == Kind::null) continue;
    std::optional<std::string_view> name;
    if (protocol.kind == Kind::address) {
      name = textAt(image_.pointerAt(protocol.address + kProtocolName));
    } else if (protocol.kind == Kind::symbol) {
      name = nameInSymbol(protocol.symbol, kProtocolSymbol);
    }
    if (name) {
      names.push_back(*name);
    } else {
      report(owner, "adopts a protocol that cannot be read");
    }
  }
}

bool ObjCMetadata::spend(std::uint64_t bytes) {
  if (bytes <= budget_) {
    budget_ -= bytes;
    return true;
  }
  if (!isExhausted_)
    report("the image", "refers to the same records too often; the rest is left out");
  isExhausted_ = true;
  budget_ = 0;
  return false;
}

void ObjCMetadata::report(std::string_view owner, std::string_view fault) {
  constexpr std::size_t kMost = 200;
  constexpr std::size_t kLongestName = 200;
  // Everything after it is missing for that reason alone.
  if (isExhausted_) return;
  if (diagnostics_.size() == kMost) {
    ++furtherDiagnostics_;
    return;
  }
  diagnostics_.push_back(std::string(owner.substr(0, kLongestName)) + " " + std::string(fault));
}

std::vector<std::string> ObjCMetadata::diagnostics() const {
  std::vector<std::string> all;
  all.reserve(diagnostics_.size() + 1);
  for (const std::string& each : diagnostics_) all.push_back(wellFormedUTF8(each));
  if (furtherDiagnostics_ > 0) {
    all.push_back("and " + std::to_string(furtherDiagnostics_) + " further fault" +
                  (furtherDiagnostics_ == 1 ? "" : "s"));
  }
  return all;
}

}  // namespace tavlen
