#pragma once

#include "tools/loader/engine/HookStack.h"
#include "tools/loader/engine/Native.h"

namespace tavlen::loader {

/// What %orig calls: the implementation that the running hook replaced.
///
/// Its arguments are the receiver, the calling function if that can be read, whether the script
/// gave arguments of its own, and the arguments to pass. The engine's part of objc_orig spreads
/// them, because reading an array's elements from here costs more.
struct OriginalCall : NativeFunction {
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override;
};

}  // namespace tavlen::loader
