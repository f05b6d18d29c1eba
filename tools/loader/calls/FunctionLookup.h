#pragma once

#include <mutex>
#include <string>
#include <unordered_map>

#include "tools/loader/engine/Native.h"

namespace tavlen::loader {

/// loadFunc(name, types): looks a C function up, and keeps what it found.
struct FunctionLookup : NativeFunction {
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override;

 private:
  std::mutex lock_;
  std::unordered_map<std::string, JSObjectRef>
      found_;  ///< by name, blank and types; protected for ever
};

}  // namespace tavlen::loader
