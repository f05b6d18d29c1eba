#pragma once

#include <memory>

#include "tools/loader/engine/Native.h"
#include "tools/loader/types/CallSignature.h"

namespace tavlen::loader {

/// A C function of the program that scripts call, or the code of a block, whose first argument is
/// the block.
class FunctionValue : public NativeFunction {
 public:
  FunctionValue(Engine& owner, void (*code)(), std::shared_ptr<const CallSignature> signature)
      : NativeFunction(owner), code_(code), signature_(std::move(signature)) {}

  JSValueRef call(const Call& call) override;

 protected:
  FunctionValue(Engine& owner, void (*code)(), std::shared_ptr<const CallSignature> signature,
                Kind itsKind, void* block)
      : NativeFunction(owner, itsKind, block), code_(code), signature_(std::move(signature)) {}

 private:
  void (*const code_)();
  const std::shared_ptr<const CallSignature> signature_;
};

}  // namespace tavlen::loader
