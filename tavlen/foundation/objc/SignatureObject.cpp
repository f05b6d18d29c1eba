#include "tavlen/foundation/objc/SignatureObject.h"

#include <objc/objc.h>

#ifdef __GNU_LIBOBJC__
#include "tavlen/foundation/objc/detail/EncodedSignature.h"
#else
#include "tavlen/foundation/objc/detail/PlatformSignature.h"
#endif

namespace tavlen {

std::shared_ptr<const SignatureObject> SignatureObject::withObjCTypes(std::string_view encoding) {
#ifdef __GNU_LIBOBJC__
  return encodedSignature(encoding);
#else
  return platformSignature(encoding);
#endif
}

}  // namespace tavlen
