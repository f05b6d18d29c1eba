#include "tools/loader/types/ValueType.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>

#include "tavlen/introspection/types/JXTypeAggregate.h"
#include "tavlen/introspection/types/JXTypeArray.h"
#include "tavlen/introspection/types/JXTypeBitField.h"
#include "tavlen/introspection/types/JXTypeID.h"
#include "tavlen/introspection/types/JXTypePointer.h"
#include "tools/loader/types/MemberNames.h"

namespace tavlen::loader {

namespace {

using Kind = ValueType::Kind;

/// A structure of more members and elements is passed by no method.
constexpr std::size_t kMostElements = 1024;

struct Scalar {
  Kind kind;
  ffi_type* ffi;
  bool isSigned = false;
};

/// The scalar that `letter` encodes. A long has 32 bits in the device's encodings, which write one
/// of 64 bits as "q".
const Scalar* scalarFor(char letter) {
  static const auto kScalars = std::to_array<std::pair<char, Scalar>>({
      {'v', {Kind::nothing, &ffi_type_void}},
      {'B', {Kind::boolean, &ffi_type_uint8}},
      {'c', {Kind::integer, &ffi_type_sint8, true}},
      {'C', {Kind::integer, &ffi_type_uint8}},
      {'s', {Kind::integer, &ffi_type_sint16, true}},
      {'S', {Kind::integer, &ffi_type_uint16}},
      {'i', {Kind::integer, &ffi_type_sint32, true}},
      {'I', {Kind::integer, &ffi_type_uint32}},
      {'l', {Kind::integer, &ffi_type_sint32, true}},
      {'L', {Kind::integer, &ffi_type_uint32}},
      {'q', {Kind::integer, &ffi_type_sint64, true}},
      {'Q', {Kind::integer, &ffi_type_uint64}},
      {'f', {Kind::real, &ffi_type_float}},
      {'d', {Kind::real, &ffi_type_double}},
      {'D', {Kind::longReal, &ffi_type_longdouble}},
      {'#', {Kind::class_, &ffi_type_pointer}},
      {':', {Kind::selector, &ffi_type_pointer}},
  });
  const auto* const found = std::find_if(kScalars.begin(), kScalars.end(),
                                         [&](const auto& entry) { return entry.first == letter; });
  return found == kScalars.end() ? nullptr : &found->second;
}

std::uint64_t nextNumber() {
  static std::atomic<std::uint64_t> last = 0;
  return ++last;
}

/// "v@?@" of "@?<v@?@>".
std::string_view blockTypesIn(std::string_view encoding) {
  constexpr std::string_view kOpening = "@?<";
  const std::size_t begin = encoding.find(kOpening);
  const std::size_t end = encoding.rfind('>');
  if (begin == std::string_view::npos || end == std::string_view::npos) return {};
  return encoding.substr(begin + kOpening.size(), end - begin - kOpening.size());
}

[[noreturn]] void refuse(std::string_view what, const JXType& type) {
  throw UnsupportedType(std::string(what) + ' ' + std::string(type.encoding()) +
                        " cannot be passed");
}

}  // namespace

/// Makes nodes, for which the constructor is open.
struct ValueType::Build {
  using Made = std::shared_ptr<ValueType>;

  static Made empty() { return Made(new ValueType()); }

  static Made scalar(const Scalar& scalar) {
    Made made = empty();
    made->kind_ = scalar.kind;
    made->ffi_ = scalar.ffi;
    made->isSigned_ = scalar.isSigned;
    return made;
  }

  static Made pointer(const JXTypePointer& type) {
    const bool isText = type.encoding() == "*" &&
                        (type.qualifiers() & JXTypeQualifiers::const_) != JXTypeQualifiers::none;
    return scalar({isText ? Kind::text : Kind::pointer, &ffi_type_pointer});
  }

  static Made structure(const JXTypeStruct& type) {
    if (type.types() == nullptr) refuse("a structure without a body", type);
    const auto& types = *type.types();
    if (types.empty()) refuse("an empty structure", type);
    Made made = empty();
    made->kind_ = Kind::structure;
    made->name_ = type.name().value_or("");
    for (std::size_t i = 0; i < types.size(); ++i) {
      const auto* names = type.fieldNames();
      made->members_.emplace_back(names != nullptr && i < names->size()
                                      ? std::string((*names)[i])
                                      : memberName(made->name_, i, types.size()),
                                  from(*types[i], true));
    }
    made->layOut();
    return made;
  }

  static Made array(const JXTypeArray& type) {
    if (type.count() == 0 || type.count() > kMostElements) refuse("an array of that length", type);
    Made made = empty();
    made->kind_ = Kind::array;
    made->members_.assign(static_cast<std::size_t>(type.count()),
                          Member({}, from(*type.type(), true)));
    made->layOut();
    return made;
  }

  static Made from(const JXType& type, bool isMember) {
    if (const auto* pointed = dynamic_cast<const JXTypePointer*>(&type)) return pointer(*pointed);
    if (const auto* object = dynamic_cast<const JXTypeID*>(&type))
      return scalar({object->isBlock() ? Kind::block : Kind::object, &ffi_type_pointer});
    if (const auto* whole = dynamic_cast<const JXTypeStruct*>(&type)) return structure(*whole);
    if (dynamic_cast<const JXTypeUnion*>(&type) != nullptr) refuse("a union", type);
    if (dynamic_cast<const JXTypeBitField*>(&type) != nullptr) refuse("a bit field", type);
    if (const auto* elements = dynamic_cast<const JXTypeArray*>(&type)) {
      if (isMember) return array(*elements);
      return scalar({Kind::pointer, &ffi_type_pointer});
    }
    const Scalar* found = type.encoding().empty() ? nullptr : scalarFor(type.encoding().front());
    if (found == nullptr || (isMember && found->kind == Kind::nothing)) refuse("the type", type);
    // The letter of a complex number is read as that of volatile, which method encodings do not
    // contain.
    if ((type.qualifiers() & JXTypeQualifiers::volatile_) != JXTypeQualifiers::none)
      refuse("a complex number", type);
    return scalar(*found);
  }
};

ValueType::ValueType() : number_(nextNumber()) {}

ValueType::~ValueType() = default;

std::shared_ptr<const ValueType> ValueType::from(std::string_view encoding) {
  const std::shared_ptr<JXType> type = JXTypeForEncoding(encoding);
  if (type == nullptr) throw UnsupportedType("an empty type cannot be passed");
  auto made = Build::from(*type, false);
  if (made->kind_ == Kind::block) made->blockTypes_ = blockTypesIn(encoding);
  return made;
}

/// libffi has no arrays: an array in a structure is passed as that many members.
void ValueType::layOut() {
  for (const Member& member : members_) elements_.push_back(member.type->ffi());
  if (elements_.size() > kMostElements)
    throw UnsupportedType("a structure of so many members cannot be passed");
  elements_.push_back(nullptr);
  aggregate_.type = FFI_TYPE_STRUCT;
  aggregate_.elements = elements_.data();
  std::vector<std::size_t> offsets(members_.size());
  if (ffi_get_struct_offsets(FFI_DEFAULT_ABI, &aggregate_, offsets.data()) != FFI_OK)
    throw UnsupportedType("the structure " + name_ + " cannot be passed");
  for (std::size_t i = 0; i < members_.size(); ++i) members_[i].offset = offsets[i];
  ffi_ = &aggregate_;
}

bool ValueType::hasShapeOf(const ValueType& other) const {
#if defined(__GNU_LIBOBJC__)
  constexpr bool kBlocksArePointers = true;
#else
  constexpr bool kBlocksArePointers = false;
#endif
  const auto isBlockFor = [](const ValueType& block, const ValueType& type) {
    return block.kind_ == Kind::block && type.kind_ == Kind::pointer;
  };
  if (kBlocksArePointers && (isBlockFor(*this, other) || isBlockFor(other, *this))) return true;
  const auto family = [](Kind kind) {
    switch (kind) {
      case Kind::boolean:
        return Kind::integer;
      case Kind::text:
        return Kind::pointer;
      case Kind::block:
        return Kind::object;
      default:
        return kind;
    }
  };
  if (family(kind_) != family(other.kind_) || size() != other.size()) return false;
  return std::equal(members_.begin(), members_.end(), other.members_.begin(), other.members_.end(),
                    [](const Member& a, const Member& b) { return a.type->hasShapeOf(*b.type); });
}

std::shared_ptr<const ValueType> ValueType::merged(
    const std::shared_ptr<const ValueType>& own, const std::shared_ptr<const ValueType>& declared) {
  const bool hasNames = declared->kind_ == Kind::structure && own->name_.empty();
  const bool isBlock = declared->kind_ == Kind::block && own->kind_ != Kind::object;
  return declared->kind_ == Kind::boolean || hasNames || isBlock ? declared : own;
}

}  // namespace tavlen::loader
