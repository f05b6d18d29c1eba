#include "tavlen/introspection/headers/detail/TypeDeclarations.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "tavlen/introspection/types/JXTypeArray.h"
#include "tavlen/introspection/types/JXTypeBasic.h"
#include "tavlen/introspection/types/JXTypeBitField.h"
#include "tavlen/introspection/types/JXTypeID.h"
#include "tavlen/introspection/types/JXTypePointer.h"

namespace tavlen {

namespace {

/// Elements of an array, those of its elements included. Compilers refuse arrays of more bytes than
/// the address space has; real ones are far smaller.
constexpr std::uint64_t kMostElements = std::uint64_t{1} << 24;
/// The words that may stand before the type of a method's result or argument as a whole.
constexpr JXTypeQualifiers kMethodQualifiers = JXTypeQualifiers::in | JXTypeQualifiers::inout |
                                               JXTypeQualifiers::out | JXTypeQualifiers::bycopy |
                                               JXTypeQualifiers::byref | JXTypeQualifiers::oneway;
/// At least the size of any basic type.
constexpr std::uint64_t kScalarBytes = 32;

bool has(const JXType& type, JXTypeQualifiers qualifier) {
  return (type.qualifiers() & qualifier) != JXTypeQualifiers::none;
}

/// The name of the type in C; empty for no type at all. Unlike the printed form of a type, it
/// knows those of 128 bits.
std::string_view basicName(const JXTypeBasic& type) {
  const char character = type.encoding().empty() ? '\0' : type.encoding().front();
  switch (character) {
    case 'D':
      return "long double";
    case 't':
      return "__int128";
    case 'T':
      return "unsigned __int128";
    case 'v':
      return "void";
    default:
      break;
  }
  const JXPrimitiveType primitive = type.primitiveType();
  return primitive == JXPrimitiveType::void_ ? "" : JXNameForPrimitiveType(primitive);
}

/// The specifiers that stand before the name of the type.
std::string_view specifiersOf(const JXTypeBasic& type) {
  constexpr std::string_view kNumbers = "cCsSiIlLqQfdD";
  if (kNumbers.find(type.encoding().front()) == std::string_view::npos) return "";
  // The run time uses the letter of "volatile" for complex numbers.
  if (has(type, JXTypeQualifiers::volatile_)) return "_Complex ";
  return has(type, JXTypeQualifiers::atomic) ? "_Atomic " : "";
}

std::string_view bitFieldName(const JXTypeBitField& type) {
  constexpr std::uint64_t kIntBits = 32;
  return type.bits() > kIntBits ? "unsigned long long" : "unsigned int";
}

}  // namespace

/// One declaration, made from the declarator outwards as the type is walked inwards.
class TypeDeclarations::Declaration {
 public:
  /// Collects names in `names`. `member` is the member of a body that is declared, or that it is
  /// part of `count` times; null for a type in a method.
  Declaration(TypeDeclarations& types, Names& names, Member* member, std::uint64_t count = 1)
      : types_(types), names_(names), member_(member), count_(count) {}

  /// The declaration of `declarator`, which is empty in a method; empty for an unknown type.
  std::string of(const JXType& type, std::string declarator) {
    declarator_ = std::move(declarator);
    const JXType& core = walkIn(type);
    std::string text = isTooLarge_ ? "" : coreText(core);
    if (text.empty() || (text == "void" && !isVoidAllowed_)) {
      if (pointerDeclarator_.empty()) return "";
      // A pointer to something unknown is still a pointer.
      declarator_ = pointerDeclarator_;
      text = "void";
    }
    if (isConst_) text.insert(0, "const ");
    if (!declarator_.empty() && text.back() != '*') text += ' ';
    return text += declarator_;
  }

  /// Allows `void` outside of pointers.
  void allowVoid() { isVoidAllowed_ = true; }

 private:
  /// Follows pointers and arrays to what is neither.
  const JXType& walkIn(const JXType& type) {
    const JXType* core = &type;
    while (!isTooLarge_) {
      isConst_ = isConst_ || has(*core, JXTypeQualifiers::const_);
      if (const auto* pointer = dynamic_cast<const JXTypePointer*>(core)) {
        pointTo();
        if (pointer->isFunction()) return *core;
        core = pointer->type().get();
      } else if (const auto* array = dynamic_cast<const JXTypeArray*>(core)) {
        if (member_ == nullptr && pointerDeclarator_.empty()) {
          pointTo();  // as for an array in the parameters of a C function
        } else {
          appendLength(array->count());
        }
        core = array->type().get();
      } else {
        break;
      }
    }
    return *core;
  }

  void pointTo() {
    declarator_.insert(0, "*");
    pointerDeclarator_ = declarator_;
    isVoidAllowed_ = true;
    isArray_ = false;
    count_ = 1;
  }

  void appendLength(std::uint64_t length) {
    isVoidAllowed_ = false;
    isArray_ = true;
    if (declarator_.starts_with('*')) declarator_ = "(" + declarator_ + ")";
    declarator_ += "[" + std::to_string(length) + "]";
    isTooLarge_ = length > kMostElements / count_;
    if (!isTooLarge_) count_ *= std::max<std::uint64_t>(length, 1);
  }

  std::string coreText(const JXType& core) {
    if (const auto* basic = dynamic_cast<const JXTypeBasic*>(&core)) return basicText(*basic);
    if (const auto* object = dynamic_cast<const JXTypeID*>(&core)) return objectText(*object);
    if (const auto* bits = dynamic_cast<const JXTypeBitField*>(&core)) return bitsText(*bits);
    if (const auto* complex = dynamic_cast<const JXTypeComplex*>(&core)) {
      return complexText(*complex);
    }
    // A pointer to a function.
    declarator_ = "(" + declarator_ + ")(void)";
    isConst_ = false;
    return "void";
  }

  void addBytes() {
    if (member_ != nullptr) member_->bytes += kScalarBytes * count_;
  }

  std::string basicText(const JXTypeBasic& type) {
    const std::string_view name = basicName(type);
    if (name.empty()) return "";
    addBytes();
    return std::string(specifiersOf(type)) += name;
  }

  std::string bitsText(const JXTypeBitField& type) {
    constexpr std::uint64_t kMostBits = 64;
    if (type.bits() > kMostBits) return "";
    addBytes();
    const bool isField = member_ != nullptr && pointerDeclarator_.empty() && !isArray_;
    // A field without bits, which ends a unit of storage, cannot have a name.
    if (isField && type.bits() == 0) declarator_.clear();
    if (isField) declarator_ += ":" + std::to_string(type.bits());
    return std::string(bitFieldName(type));
  }

  std::string objectText(const JXTypeID& type) {
    addBytes();
    if (type.isBlock()) return "id /* block */";
    const bool hasClass = type.name() && !type.name()->empty();
    std::string text = "id";
    if (hasClass) {
      const std::string& identifier = types_.identifiers_.of(*type.name());
      names_.classes.insert(identifier);
      text = identifier;
    }
    if (type.protocols() != nullptr && !type.protocols()->empty()) {
      char separator = '<';
      for (const std::string_view protocol : *type.protocols()) {
        const std::string& identifier = types_.protocols_.of(protocol);
        names_.protocols.insert(identifier);
        text += separator == '<' ? "<" : ", ";
        text += identifier;
        separator = ',';
      }
      text += '>';
    }
    return hasClass ? text += " *" : text;
  }

  std::string complexText(const JXTypeComplex& type) {
    if (type.name()) {
      const auto index = types_.definitions_.named(type.typeName(), *type.name());
      types_.define(index, type);
      return reference(index);
    }
    if (type.types() == nullptr) return "";
    if (member_ != nullptr) return inlineText(type);
    const auto index =
        types_.definitions_.unnamed(type.typeName(), type.encoding(), types_.identifiers_);
    types_.define(index, type);
    return reference(index);
  }

  std::string reference(TypeDefinitions::Index index) {
    const bool isPart = isArray_ || (member_ != nullptr && pointerDeclarator_.empty());
    if (isPart) types_.definitions_.setNeededWhole(index);
    if (isPart && member_ != nullptr) member_->parts.push_back({index, count_});
    return types_.definitions_.reference(index);
  }

  std::string inlineText(const JXTypeComplex& type) {
    std::string text(type.typeName());
    text += " { ";
    for (const Member& inner : types_.membersOf(type, names_, count_)) {
      if (inner.text.empty()) {
        text += "/* " + inner.name + ": unknown type */ ";
      } else {
        text += inner.text + "; ";
      }
      member_->parts.insert(member_->parts.end(), inner.parts.begin(), inner.parts.end());
      member_->bytes += inner.bytes;
    }
    return text += '}';
  }

  TypeDeclarations& types_;
  Names& names_;
  Member* member_;
  std::uint64_t count_;  ///< of the present part in the whole, or in what a pointer points to
  std::string declarator_;
  std::string pointerDeclarator_;  ///< the declarator as of the innermost pointer; empty for none
  bool isConst_ = false;
  bool isArray_ = false;  ///< whether the present part is an element
  bool isTooLarge_ = false;
  bool isVoidAllowed_ = false;
};

std::string TypeDeclarations::result(std::string_view encoding, Names& names) {
  return methodType(encoding, names, true);
}

std::string TypeDeclarations::argument(std::string_view encoding, Names& names) {
  return methodType(encoding, names, false);
}

std::string TypeDeclarations::methodType(std::string_view encoding, Names& names, bool isResult) {
  const std::shared_ptr<JXType> type = JXTypeForEncoding(encoding);
  if (type == nullptr) return std::string(kUnknownType);
  Declaration declaration(*this, names, nullptr);
  if (isResult) declaration.allowVoid();
  std::string text = declaration.of(*type, "");
  if (text.empty()) text = kUnknownType;
  const auto words = JXStringForTypeQualifiers(type->qualifiers() & kMethodQualifiers);
  return words ? *words + " " + text : text;
}

void TypeDeclarations::define(TypeDefinitions::Index index, const JXTypeComplex& type) {
  if (type.types() == nullptr) return;
  definitions_.setBody(index, {.members = membersOf(type, bodyNames_, 1),
                               .hasNames = type.fieldNames() != nullptr,
                               .encodingLength = type.encoding().size()});
}

std::vector<TypeDefinitions::Member> TypeDeclarations::membersOf(const JXTypeComplex& type,
                                                                 Names& names,
                                                                 std::uint64_t count) {
  const JXTypeComplex::Types& types = *type.types();
  const JXTypeComplex::FieldNames* given = type.fieldNames();
  UniqueNames fields('_');
  std::vector<Member> members(types.size());
  for (std::size_t i = 0; i < types.size(); ++i) {
    Member& member = members[i];
    const bool isGiven = given != nullptr && i < given->size() && isDeclarableName((*given)[i]);
    member.name = isGiven ? std::string((*given)[i]) : "field" + std::to_string(i + 1);
    if (given != nullptr) member.name = fields.add(member.name);
    member.text = Declaration(*this, names, &member, count).of(*types[i], member.name);
  }
  return members;
}

}  // namespace tavlen
