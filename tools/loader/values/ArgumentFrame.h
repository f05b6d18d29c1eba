#pragma once

#include <cstddef>

#include <JavaScriptCore/JavaScript.h>

#include "tools/loader/types/CallSignature.h"

namespace tavlen::loader {

class Engine;

/// The arguments of one call into the program. On the stack, for the duration of the call.
class ArgumentFrame {
 public:
  explicit ArgumentFrame(const CallSignature& signature)
      : signature_(signature), memory_(signature.frameSize()) {}

  /// Writes `value` as the argument. Throws ScriptError, which names the argument as number
  /// `shownIndex` from 1.
  void set(Engine& engine, std::size_t index, JSValueRef value, std::size_t shownIndex);
  /// Sets an argument that is a pointer: receiver, selector, nil.
  void setPointer(std::size_t index, const void* pointer);
  /// Passes on what lies at `memory`, which must outlive the call.
  void use(std::size_t index, void* memory) { places_[index] = memory; }

  /// Calls the program's code. Writes the result, widened to a register, to `result`. Throws
  /// ProgramException.
  void call(void (*code)(), void* result);

 private:
  std::byte* own(std::size_t index);

  const CallSignature& signature_;
  CallMemory memory_;
  void* places_[CallSignature::kMostArguments];  // NOLINT(modernize-avoid-c-arrays): uninitialised
};

}  // namespace tavlen::loader
