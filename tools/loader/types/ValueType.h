#pragma once

#include <ffi.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/loader/base/EngineString.h"

namespace tavlen {
class JXType;
}

namespace tavlen::loader {

/// Why a method or a function cannot be called with its types: "a union (?=if) cannot be passed".
class UnsupportedType : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The type of an argument, a result or a member, prepared for calls: its kind, its memory, its
/// members. Immutable.
///
/// Threads: any.
class ValueType {
 public:
  /// The families of types, which differ in what they are in a script.
  enum class Kind {
    nothing,  ///< void
    boolean,
    integer,
    real,
    longReal,  ///< long double
    object,
    block,
    class_,
    selector,
    text,  ///< const char *
    pointer,
    structure,
    array,  ///< in a structure only: elsewhere an array is a pointer
  };
  /// A member of a structure, or an element of an array.
  struct Member;

  /// The type that `encoding` begins with. Throws UnsupportedType for unions, bit fields, vectors,
  /// complex numbers, empty structures and those without a body.
  static std::shared_ptr<const ValueType> from(std::string_view encoding);

  ValueType(const ValueType&) = delete;
  ValueType& operator=(const ValueType&) = delete;
  ~ValueType();

  Kind kind() const { return kind_; }
  /// A number that no other type of this process has, even after this one's end.
  std::uint64_t number() const { return number_; }
  /// Of an integer.
  bool isSigned() const { return isSigned_; }
  /// Whether it is a structure or an array, which a script can change in place.
  bool isAggregate() const { return !members_.empty(); }
  /// In bytes; 0 for void.
  std::size_t size() const { return kind_ == Kind::nothing ? 0 : ffi_->size; }
  /// The form in which libffi passes it. Valid as long as this object.
  ffi_type* ffi() const { return ffi_; }
  /// The members of a structure; the elements of an array.
  const std::vector<Member>& members() const { return members_; }
  /// The types of a block's code, the block itself first among the arguments: "v@?@". Empty where
  /// the encoding does not tell them.
  const std::string& blockTypes() const { return blockTypes_; }
  /// The structure's name; empty without one.
  const std::string& name() const { return name_; }

  /// Whether values of both types have the same memory and are passed alike: integers of one size,
  /// pointers of all kinds, structures whose members do. Objects, classes and selectors are
  /// pointers of their own. A block is an object; where the run time has no block objects, it is a
  /// pointer as well.
  bool hasShapeOf(const ValueType& other) const;
  /// The type as a script sees it when the caller declared it as `declared`: a truth value or a
  /// block with its types where it was declared as one, and the names of a declared structure where
  /// its own has none.
  static std::shared_ptr<const ValueType> merged(const std::shared_ptr<const ValueType>& own,
                                                 const std::shared_ptr<const ValueType>& declared);

 private:
  struct Build;

  ValueType();
  void layOut();

  const std::uint64_t number_;
  Kind kind_ = Kind::nothing;
  bool isSigned_ = false;
  ffi_type* ffi_ = &ffi_type_void;
  std::string name_;
  std::string blockTypes_;
  std::vector<Member> members_;
  std::vector<ffi_type*> elements_;  ///< of an aggregate, with a null at the end
  ffi_type aggregate_{};
};

struct ValueType::Member {
  Member(std::string ownName, std::shared_ptr<const ValueType> ownType)
      : name(std::move(ownName)),
        type(std::move(ownType)),
        key(std::make_shared<const EngineString>(name)) {}

  std::string name;  ///< empty in an array
  std::shared_ptr<const ValueType> type;
  std::size_t offset = 0;
  std::shared_ptr<const EngineString> key;  ///< the name for the engine
};

}  // namespace tavlen::loader
