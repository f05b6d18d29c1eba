#pragma once

#include <ffi.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "tools/loader/types/ValueType.h"

namespace tavlen::loader {

/// The types of a method or a function, prepared for calls by libffi. Immutable; threads: any.
class CallSignature {
 public:
  /// Methods with more arguments are refused, so that a call's values fit on the stack, where the
  /// collector sees them.
  static constexpr std::size_t kMostArguments = 64;

  using Types = std::vector<std::shared_ptr<const ValueType>>;

  /// Of an encoding as methods have it, with or without offsets: the result, then the arguments.
  /// Throws UnsupportedType.
  static std::shared_ptr<const CallSignature> from(std::string_view encoding);
  /// Of these types. The arguments from `fixed` on are variadic; with all of them fixed the call is
  /// an ordinary one. Throws UnsupportedType.
  CallSignature(std::shared_ptr<const ValueType> result, Types arguments, std::size_t fixed);
  /// Of a method with its own arguments alone: after an object, which may be the first of a list,
  /// with a null pointer. A method that is not variadic ignores it. `fixed` itself after anything
  /// else.
  static std::shared_ptr<const CallSignature> ended(
      const std::shared_ptr<const CallSignature>& fixed);
  CallSignature(const CallSignature&) = delete;
  CallSignature& operator=(const CallSignature&) = delete;

  const ValueType& result() const { return *result_; }
  const std::shared_ptr<const ValueType>& sharedResult() const { return result_; }
  const Types& arguments() const { return arguments_; }
  /// For libffi, which does not change it.
  ffi_cif* cif() const { return &cif_; }

  /// The bytes that the result needs in memory: at least a register's, which libffi always writes.
  std::size_t resultSize() const { return resultSize_; }
  /// The bytes that the arguments need together, and where each begins.
  std::size_t frameSize() const { return frameSize_; }
  std::size_t offset(std::size_t argument) const { return offsets_[argument]; }

 private:
  std::shared_ptr<const ValueType> result_;
  Types arguments_;
  std::vector<ffi_type*> ffiArguments_;
  std::vector<std::size_t> offsets_;
  std::size_t frameSize_ = 0;
  std::size_t resultSize_ = 0;
  mutable ffi_cif cif_{};
};

/// Memory for a call's arguments or result: on the stack up to a common size. Aligned for every
/// type.
class CallMemory {
 public:
  explicit CallMemory(std::size_t size);
  CallMemory(const CallMemory&) = delete;
  CallMemory& operator=(const CallMemory&) = delete;

  std::byte* data() { return large_ ? large_.get() : small_; }

 private:
  static constexpr std::size_t kCommonSize = 256;

  alignas(std::max_align_t)
      std::byte small_[kCommonSize];    // NOLINT(modernize-avoid-c-arrays): uninitialised
  std::unique_ptr<std::byte[]> large_;  // NOLINT(modernize-avoid-c-arrays)
};

}  // namespace tavlen::loader
