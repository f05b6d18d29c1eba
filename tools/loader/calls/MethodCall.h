#pragma once

#include "tools/loader/engine/Native.h"

namespace tavlen::loader {

/// objc_send(receiver, selector, ...arguments): a script's message.
struct MethodCall : NativeFunction {
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override;
};

}  // namespace tavlen::loader
