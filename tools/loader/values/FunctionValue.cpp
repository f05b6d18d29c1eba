#include "tools/loader/values/FunctionValue.h"

#include <string>

#include "tools/loader/values/ArgumentFrame.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {

JSValueRef FunctionValue::call(const Call& call) {
  const std::size_t hidden = pointer != nullptr ? 1 : 0;
  const std::size_t count = signature_->arguments().size() - hidden;
  if (call.count != count) {
    throw ScriptError("the function takes " + std::to_string(count) + " arguments, not " +
                      std::to_string(call.count));
  }
  ArgumentFrame frame(*signature_);
  if (hidden != 0) frame.setPointer(0, pointer);
  for (std::size_t i = 0; i < count; ++i) frame.set(engine, i + hidden, call[i], i + 1);
  CallMemory result(signature_->resultSize());
  frame.call(code_, result.data());
  return readValue(engine, signature_->result(), result.data());
}

}  // namespace tavlen::loader
