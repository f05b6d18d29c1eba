#pragma once

#include <memory>
#include <utility>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A C++ callable as an Objective-C block, built by hand according to the public block ABI.
///
/// Created by makeBlock() or makeBlockWithCode(), owned by this object. The receiver of get() may
/// copy the block by the ABI's functions and call the copy later, from any thread, even after this
/// object is destroyed. The captures are destroyed once, with the last copy.
class TAVLEN_API ObjCBlock {
 public:
  /// The block, which stays owned. Under GCC's run time it is not an object: do not retain it or
  /// put it into a collection.
  void* get() const { return block_.get(); }
  /// The code of any block, which gets the block as its first argument.
  static void (*codeOf(const void* block))() { return static_cast<const Header*>(block)->invoke; }

 private:
  template <class Signature, class Callable>
  friend ObjCBlock makeBlock(Callable callable);
  template <class Captured>
  friend ObjCBlock makeBlockWithCode(void (*code)(), Captured captured);
  template <class Captured>
  friend Captured& capturedBy(void* block);
  template <class Captured>
  struct Literal;
  template <class Signature, class Callable>
  struct Code;

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

  /// Moves `literal` to the heap; sets its class and flags first. Throws std::bad_alloc.
  explicit ObjCBlock(Header& literal);

  std::unique_ptr<void, Release> block_;
};

/// The memory layout of a block. Its captures are elsewhere, because run times differ in how they
/// copy the literal's bytes: GNUstep's copies them back as well.
template <class Captured>
struct ObjCBlock::Literal {
  Header header;
  Captured* captured;  ///< owned by the block on the heap, where copies are counted

  /// Called when the block is moved to the heap.
  static void copy(void* /*target*/, const void* /*source*/) noexcept {}
  /// Called with the last copy.
  static void dispose(const void* block) noexcept {
    delete static_cast<const Literal*>(block)->captured;
  }
};

/// The code of a block that calls what it has captured.
template <class Result, class... Arguments, class Callable>
struct ObjCBlock::Code<Result(Arguments...), Callable> {
  static Result invoke(Literal<Callable>* block, Arguments... arguments) noexcept {
    return (*block->captured)(std::forward<Arguments>(arguments)...);
  }
};

/// Creates a block with captures and with code whose types the compiler does not know. The code
/// gets the block as its first argument. Throws std::bad_alloc.
template <class Captured>
ObjCBlock makeBlockWithCode(void (*code)(), Captured captured) {
  using Literal = ObjCBlock::Literal<Captured>;
  static constexpr ObjCBlock::Descriptor kDescriptor = {0, sizeof(Literal), &Literal::copy,
                                                        &Literal::dispose};
  auto owned = std::make_unique<Captured>(std::move(captured));
  Literal literal{{nullptr, 0, 0, code, &kDescriptor}, owned.get()};
  ObjCBlock block(literal.header);
  (void)owned.release();
  return block;
}

/// What makeBlockWithCode() gave to the block. Valid as long as the block.
template <class Captured>
Captured& capturedBy(void* block) {
  return *static_cast<ObjCBlock::Literal<Captured>*>(block)->captured;
}

/// Creates a block of the C function type `Signature`: makeBlock<void(id)>(...). The callable must
/// capture by value or shared pointer. It must not throw, not even an Objective-C exception: that
/// would end the process. Throws std::bad_alloc.
template <class Signature, class Callable>
ObjCBlock makeBlock(Callable callable) {
  return makeBlockWithCode(
      reinterpret_cast<void (*)()>(&ObjCBlock::Code<Signature, Callable>::invoke),
      std::move(callable));
}

}  // namespace tavlen
