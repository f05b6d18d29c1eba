#include "tools/loader/values/ArgumentFrame.h"

#include <cstring>
#include <string>

#include "tools/loader/engine/Native.h"
#include "tools/loader/engine/ProgramCode.h"
#include "tools/loader/values/Values.h"

namespace tavlen::loader {

std::byte* ArgumentFrame::own(std::size_t index) {
  std::byte* place = memory_.data() + signature_.offset(index);
  places_[index] = place;
  return place;
}

void ArgumentFrame::set(Engine& engine, std::size_t index, JSValueRef value,
                        std::size_t shownIndex) {
  try {
    writeValue(engine, *signature_.arguments()[index], value, own(index));
  } catch (const ScriptError& error) {
    throw ScriptError("argument " + std::to_string(shownIndex) + ": " + error.what());
  }
}

void ArgumentFrame::setPointer(std::size_t index, const void* pointer) {
  std::memcpy(own(index), &pointer, sizeof(pointer));
}

void ArgumentFrame::call(void (*code)(), void* result) {
  runProgram([&] { ffi_call(signature_.cif(), code, result, places_); });
}

}  // namespace tavlen::loader
