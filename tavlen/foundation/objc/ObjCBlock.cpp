#include "tavlen/foundation/objc/ObjCBlock.h"

#include <Block.h>

#include <new>

// The block ABI's class of blocks that are not yet on the heap. Only the address of the array is
// used. Apple's header declares it; the other run time's public header does not.
#ifndef __APPLE__
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreserved-identifier"
#endif
extern "C" void* _NSConcreteStackBlock[];
#ifdef __clang__
#pragma clang diagnostic pop
#endif
#endif

namespace tavlen {

ObjCBlock::ObjCBlock(Header& literal) {
  constexpr int kHasCopyAndDispose = 1 << 25;
  // A mark of the ABI's first version. GNUstep's own functions, which a program that links it gets,
  // copy nothing without it; the others ignore it.
  constexpr int kHasDescriptor = 1 << 29;
  literal.isa = _NSConcreteStackBlock;
  literal.flags = kHasCopyAndDispose | kHasDescriptor;
  block_.reset(_Block_copy(&literal));
  if (block_ == nullptr) throw std::bad_alloc();
}

void ObjCBlock::Release::operator()(void* block) const { _Block_release(block); }

}  // namespace tavlen
