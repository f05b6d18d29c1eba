#include "tavlen/introspection/JXTypeIDIgnoreName.h"

namespace tavlen {

bool JXTypeIDIgnoreName = false;
JXTypeLock JXTypeIDIgnoreNameLock("JXTypeIDIgnoreNameLock");

}  // namespace tavlen
