#include "tavlen/foundation/objc/MethodSignature.h"

#include <objc/objc.h>

#include "tavlen/foundation/objc/detail/EncodedSignature.h"
#include "tavlen/foundation/objc/detail/PlatformSignature.h"

namespace tavlen {

std::shared_ptr<const MethodSignature> MethodSignature::signatureWithObjCTypes(
    std::string_view encoding) {
#ifdef __GNU_LIBOBJC__
  return encodedSignature(encoding);
#else
  return platformSignature(encoding);
#endif
}

std::shared_ptr<const MethodSignature> MethodSignature::initWithSignature(objc_object* signature) {
  return platformSignature(signature);
}

}  // namespace tavlen
