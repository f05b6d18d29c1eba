#include "tools/loader/base/BlockObject.h"

#include <Block.h>
#include <objc/runtime.h>

#include <cstddef>

#include "tools/loader/base/Messages.h"

namespace tavlen::loader {

#if defined(__GNU_LIBOBJC__)

namespace {

constexpr const char* kClass = "TavlenBlockHolder";
constexpr const char* kRoot = "NSObject";

Ivar blockVariable() {
  static Ivar shared = class_getInstanceVariable(ObjCRuntime::classNamed(kClass), "block");
  return shared;
}

void*& blockOf(id holder) {
  return *reinterpret_cast<void**>(reinterpret_cast<std::byte*>(holder) +
                                   ivar_getOffset(blockVariable()));
}

using Code = void (*)();
using Dealloc = void (*)(id self, SEL selector);

void dealloc(id self, SEL selector) {
  _Block_release(blockOf(self));
  const auto code = reinterpret_cast<Code>(
      class_getMethodImplementation(ObjCRuntime::classNamed(kRoot), selector));
  reinterpret_cast<Dealloc>(code)(self, selector);
}

/// Null where no Foundation is loaded.
Class defineHolders() {
  Class root = ObjCRuntime::classNamed(kRoot);
  if (root == nullptr) return nullptr;
  Class holders = objc_allocateClassPair(root, kClass, 0);
  constexpr unsigned kAlignmentPower = 3;
  class_addIvar(holders, "block", sizeof(void*), kAlignmentPower, "^v");
  class_addMethod(holders, ObjCRuntime::selectorNamed("dealloc"),
                  reinterpret_cast<IMP>(reinterpret_cast<Code>(&dealloc)), "v16@0:8");
  objc_registerClassPair(holders);
  return holders;
}

}  // namespace

id newBlockObject(void* block) {
  static Class holders = defineHolders();
  if (holders == nullptr) return nullptr;
  id holder = ObjCRuntime::send(holders, "new");
  blockOf(holder) = _Block_copy(block);
  return holder;
}

void* blockIn(id object) { return blockOf(object); }

#else

id newBlockObject(void* block) { return static_cast<id>(_Block_copy(block)); }

void* blockIn(id object) { return object; }

#endif

}  // namespace tavlen::loader
