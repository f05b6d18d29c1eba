#include "tools/loader/types/CallSignature.h"

#include <algorithm>
#include <string>
#include <utility>

#include "tavlen/foundation/objc/MethodTypes.h"

namespace tavlen::loader {

std::shared_ptr<const CallSignature> CallSignature::from(std::string_view encoding) {
  const auto types = splitMethodTypes(encoding);
  if (!types)
    throw UnsupportedType("the type encoding " + std::string(encoding) + " cannot be read");
  Types arguments;
  for (const std::string_view type : types->arguments) arguments.push_back(ValueType::from(type));
  const std::size_t count = arguments.size();
  return std::make_shared<const CallSignature>(ValueType::from(types->result), std::move(arguments),
                                               count);
}

CallSignature::CallSignature(std::shared_ptr<const ValueType> result, Types arguments,
                             std::size_t fixed)
    : result_(std::move(result)), arguments_(std::move(arguments)) {
  if (arguments_.size() > kMostArguments) {
    throw UnsupportedType("more than " + std::to_string(kMostArguments) +
                          " arguments cannot be passed");
  }
  for (const auto& type : arguments_) {
    if (type->kind() == ValueType::Kind::nothing)
      throw UnsupportedType("an argument cannot be void");
    ffiArguments_.push_back(type->ffi());
    offsets_.push_back(frameSize_);
    constexpr std::size_t kAlignment = alignof(std::max_align_t);
    frameSize_ +=
        (std::max(type->size(), sizeof(ffi_arg)) + kAlignment - 1) / kAlignment * kAlignment;
  }
  resultSize_ = std::max(result_->size(), sizeof(ffi_arg));
  const auto count = static_cast<unsigned>(ffiArguments_.size());
  const ffi_status status =
      fixed == arguments_.size()
          ? ffi_prep_cif(&cif_, FFI_DEFAULT_ABI, count, result_->ffi(), ffiArguments_.data())
          : ffi_prep_cif_var(&cif_, FFI_DEFAULT_ABI, static_cast<unsigned>(fixed), count,
                             result_->ffi(), ffiArguments_.data());
  if (status != FFI_OK) throw UnsupportedType("these types cannot be passed together");
}

std::shared_ptr<const CallSignature> CallSignature::ended(
    const std::shared_ptr<const CallSignature>& fixed) {
  constexpr std::size_t kHidden = 2;  // receiver and selector
  Types types = fixed->arguments();
  const std::size_t count = types.size();
  if (count <= kHidden || count >= kMostArguments ||
      types.back()->kind() != ValueType::Kind::object)
    return fixed;
  types.push_back(ValueType::from("^v"));
  return std::make_shared<const CallSignature>(fixed->sharedResult(), std::move(types), count);
}

CallMemory::CallMemory(std::size_t size) {
  if (size > kCommonSize)
    large_ = std::make_unique<std::byte[]>(size);  // NOLINT(modernize-avoid-c-arrays)
}

}  // namespace tavlen::loader
