#include "tavlen/introspection/types/JXTypeIDIgnoreName.h"

namespace tavlen {

bool JXTypeIDIgnoreName = false;
JXTypeLock JXTypeIDIgnoreNameLock("JXTypeIDIgnoreNameLock");

}  // namespace tavlen
