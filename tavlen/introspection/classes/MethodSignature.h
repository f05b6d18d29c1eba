#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/objc/SignatureObject.h"

namespace tavlen {

/// The types of a method, made from its type encoding: a thin wrapper of the platform's object,
/// which copies share. The receiver and the selector count as arguments. Threads: any.
class MethodSignature {
 public:
  /// Nothing for an encoding from which the platform makes no signature.
  static std::optional<MethodSignature> signatureWithObjCTypes(std::string_view encoding);

  /// Wraps a signature that is there already, which is not null.
  static MethodSignature initWithSignature(std::shared_ptr<const SignatureObject> signature);

  std::size_t numberOfArguments() const { return signature_->numberOfArguments(); }
  /// In bytes; a hint, which no two platforms count alike.
  std::size_t frameLength() const { return signature_->frameLength(); }
  bool isOneway() const { return signature_->isOneway(); }
  /// In bytes; 0 for void.
  std::size_t methodReturnLength() const { return signature_->methodReturnLength(); }
  /// With its qualifiers, without its offset. Throws std::out_of_range for an index past the last
  /// argument.
  std::string getArgumentTypeAtIndex(std::size_t index) const {
    return signature_->argumentTypeAtIndex(index);
  }
  std::string methodReturnType() const { return signature_->methodReturnType(); }

  /// The wrapped object's own texts.
  std::string description() const { return signature_->description(); }
  std::string debugDescription() const { return signature_->debugDescription(); }

 private:
  explicit MethodSignature(std::shared_ptr<const SignatureObject> signature);

  std::shared_ptr<const SignatureObject> signature_;
};

}  // namespace tavlen
