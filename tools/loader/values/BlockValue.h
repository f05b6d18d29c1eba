#pragma once

#include <objc/objc.h>

#include "tools/loader/values/FunctionValue.h"

namespace tavlen::loader {

class BlockType;

/// What a block is in scripts: an object, or a pointer under a run time without block objects.
inline constexpr Native::Kind kBlockKind =
#if defined(__GNU_LIBOBJC__)
    Native::Kind::pointer;
#else
    Native::Kind::object;
#endif

/// A block with known types, which a script can call and pass on. Keeps a copy of it.
class BlockValue : public FunctionValue {
 public:
  /// The value for `block`. Throws std::runtime_error where no Foundation is loaded.
  static JSValueRef make(Engine& engine, const BlockType& type, void* block);
  /// The value for the block in `object`, which it takes over; see BlockObject.h.
  static JSValueRef adopting(Engine& engine, const BlockType& type, id object);

  ~BlockValue() override;

  id keptObject() const override { return object_; }

 private:
  BlockValue(Engine& owner, const BlockType& type, id object);

  id object_;
};

}  // namespace tavlen::loader
