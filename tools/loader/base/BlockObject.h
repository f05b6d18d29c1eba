#pragma once

#include <objc/objc.h>

namespace tavlen::loader {

/// An object that holds a copy of `block` until its end; the caller owns it. It is the copy itself
/// where blocks are objects. Null where no Foundation is loaded.
id newBlockObject(void* block);
/// The copy that such an object holds.
void* blockIn(id object);

}  // namespace tavlen::loader
