#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "tools/loader/engine/Native.h"
#include "tools/loader/types/CallSignature.h"

namespace tavlen::loader {

/// A C function of the program, as loadFunc returns it.
struct FunctionCall : NativeFunction {
  FunctionCall(Engine& owner, void (*function)(), std::shared_ptr<const CallSignature> types)
      : NativeFunction(owner), code(function), signature(std::move(types)) {}

  JSValueRef call(const Call& call) override;

  void (*const code)();
  const std::shared_ptr<const CallSignature> signature;
};

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
