#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace tavlen {

/// A callable in the form in which Objective-C passes one, made by hand over the public block ABI.
///
/// Made by makeBlock(). Whoever is given get() may copy it by the ABI's means and call the copy
/// later, from any thread, when this object is long gone; what the callable captured is freed once,
/// with the last copy.
class ObjCBlock {
 public:
  /// Borrowed. Under GCC's run time it is no object: it must not be retained or put into a
  /// collection.
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
  /// What all blocks begin with.
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

  /// Takes over what `literal`, filled but for its class and flags, captured. Throws
  /// std::bad_alloc.
  explicit ObjCBlock(Header& literal);

  std::unique_ptr<void, Release> block_;
};

template <class Result, class... Arguments, class Callable>
struct ObjCBlock::Literal<Result(Arguments...), Callable> {
  static_assert(std::is_nothrow_move_constructible_v<Callable>, "the ABI's copy cannot fail");
  static_assert(alignof(Callable) <= alignof(std::max_align_t));

  Header header;
  Callable callable;

  static Result invoke(Literal* block, Arguments... arguments) noexcept {
    return block->callable(std::forward<Arguments>(arguments)...);
  }
  /// Called once, for the literal: blocks on the heap are counted. The bytes are there already.
  static void copy(void* target, const void* source) noexcept {
    auto& literal = *static_cast<Literal*>(const_cast<void*>(source));
    ::new (static_cast<void*>(&static_cast<Literal*>(target)->callable))
        Callable(std::move(literal.callable));
  }
  static void dispose(const void* block) noexcept {
    static_cast<Literal*>(const_cast<void*>(block))->callable.~Callable();
  }
};

/// A block of the C function type `Signature`: makeBlock<void(id)>(...). The callable captures by
/// value or by shared pointer. It must not throw, not even an Objective-C exception: that ends the
/// process.
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
