#include "tools/loader/values/BlockType.h"

#include <mutex>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "tavlen/foundation/objc/MethodTypes.h"
#include "tools/loader/values/ScriptBlock.h"

namespace tavlen::loader {

BlockType::BlockType(std::shared_ptr<const CallSignature> signature)
    : signature_(std::move(signature)) {
  const auto& arguments = signature_->arguments();
  if (arguments.empty() || arguments.front()->kind() != ValueType::Kind::block)
    throw UnsupportedType("the first argument of a block's code is the block");
  void* code = nullptr;
  auto* closure = static_cast<ffi_closure*>(ffi_closure_alloc(sizeof(ffi_closure), &code));
  if (closure == nullptr ||
      ffi_prep_closure_loc(closure, signature_->cif(), &enterScriptBlock, this, code) != FFI_OK) {
    if (closure != nullptr) ffi_closure_free(closure);
    throw std::runtime_error("there is no memory for the code of a block");
  }
  code_ = reinterpret_cast<void (*)()>(code);
}

const BlockType& BlockType::of(const std::string& types) {
  static std::mutex lock;
  static auto& known = *new std::unordered_map<std::string, std::unique_ptr<const BlockType>>();
  const std::lock_guard held(lock);
  auto& type = known[types];
  if (type == nullptr) type.reset(new BlockType(CallSignature::from(types)));
  return *type;
}

const BlockType& BlockType::without(const std::string& types) {
  const auto parts = splitMethodTypes(types);
  if (!parts) throw UnsupportedType("the types " + types + " cannot be read");
  std::string whole = std::string(parts->result) + "@?";
  for (const std::string_view argument : parts->arguments) whole += argument;
  return of(whole);
}

}  // namespace tavlen::loader
