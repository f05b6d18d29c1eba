#include "tavlen/introspection/classes/MethodSignature.h"

#include <utility>

namespace tavlen {

MethodSignature::MethodSignature(std::shared_ptr<const SignatureObject> signature)
    : signature_(std::move(signature)) {}

std::optional<MethodSignature> MethodSignature::signatureWithObjCTypes(std::string_view encoding) {
  auto signature = SignatureObject::withObjCTypes(encoding);
  if (signature == nullptr) return std::nullopt;
  return MethodSignature(std::move(signature));
}

MethodSignature MethodSignature::initWithSignature(
    std::shared_ptr<const SignatureObject> signature) {
  return MethodSignature(std::move(signature));
}

}  // namespace tavlen
