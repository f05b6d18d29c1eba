#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A C++ callable as an Objective-C block, built by hand according to the public block ABI.
///
/// Created by makeBlock(), owned by this object. The receiver of get() may copy the block by the
/// ABI's functions and call the copy later, from any thread, even after this object is destroyed.
/// The captures are destroyed once, with the last copy.
class TAVLEN_API ObjCBlock {
 public:
  /// The block, which stays owned. Under GCC's run time it is not an object: do not retain it or
  /// put it into a collection.
  void* get() const { return block_.get(); }

 private:
  template <class Signature, class Callable>
  friend ObjCBlock makeBlock(Callable callable);
  template <class Signature, class Callable>
  struct Literal;

  struct Descriptor {
    unsigned long reserved;
    unsigned long size;
    void (*copy)(void* target, const void* source);
    void (*dispose)(const void* block);
  };
  /// The common beginning of all blocks.
  struct Header {
    void* isa;
    int flags;
    int reserved;
    void (*invoke)();
    const Descriptor* descriptor;
  };
  struct Release {
    void operator()(void* block) const;
  };

  /// Moves `literal` to the heap, captures included; sets its class and flags first. Throws
  /// std::bad_alloc.
  explicit ObjCBlock(Header& literal);

  std::unique_ptr<void, Release> block_;
};

/// The memory layout of a block with its captures.
template <class Result, class... Arguments, class Callable>
struct ObjCBlock::Literal<Result(Arguments...), Callable> {
  static_assert(std::is_nothrow_move_constructible_v<Callable>, "the ABI's copy cannot fail");
  static_assert(alignof(Callable) <= alignof(std::max_align_t));

  Header header;
  Callable callable;

  /// The code of the block.
  static Result invoke(Literal* block, Arguments... arguments) noexcept {
    return block->callable(std::forward<Arguments>(arguments)...);
  }
  /// Called once, to move the literal to the heap, where copies are counted. The run time has
  /// copied the bytes already.
  static void copy(void* target, const void* source) noexcept {
    auto& literal = *static_cast<Literal*>(const_cast<void*>(source));
    ::new (static_cast<void*>(&static_cast<Literal*>(target)->callable))
        Callable(std::move(literal.callable));
  }
  /// Called with the last copy.
  static void dispose(const void* block) noexcept {
    static_cast<Literal*>(const_cast<void*>(block))->callable.~Callable();
  }
};

/// Creates a block of the C function type `Signature`: makeBlock<void(id)>(...). The callable must
/// capture by value or shared pointer. It must not throw, not even an Objective-C exception: that
/// would end the process. Throws std::bad_alloc.
template <class Signature, class Callable>
ObjCBlock makeBlock(Callable callable) {
  using Literal = ObjCBlock::Literal<Signature, Callable>;
  static constexpr ObjCBlock::Descriptor kDescriptor = {0, sizeof(Literal), &Literal::copy,
                                                        &Literal::dispose};
  Literal literal{{nullptr, 0, 0, reinterpret_cast<void (*)()>(&Literal::invoke), &kDescriptor},
                  std::move(callable)};
  return ObjCBlock(literal.header);
}

}  // namespace tavlen
