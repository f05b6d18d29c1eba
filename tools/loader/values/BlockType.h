#pragma once

#include <memory>
#include <string>

#include "tools/loader/types/CallSignature.h"

namespace tavlen::loader {

/// The types of a block's code, and the code of all blocks with these types that call functions of
/// scripts. Lives as long as the process, because such blocks lead to it. Immutable; threads: any.
class BlockType {
 public:
  /// Of the types of the result and of the arguments, of which the first is the block itself:
  /// "v@?@". The same one each time. Throws UnsupportedType, and std::runtime_error if there is no
  /// memory for the code.
  static const BlockType& of(const std::string& types);
  /// The same of the types without the block itself: "v@".
  static const BlockType& without(const std::string& types);

  BlockType(const BlockType&) = delete;
  BlockType& operator=(const BlockType&) = delete;

  const std::shared_ptr<const CallSignature>& signature() const { return signature_; }
  /// The code for a block; see ScriptBlock.h.
  void (*code() const)() { return code_; }

 private:
  explicit BlockType(std::shared_ptr<const CallSignature> signature);

  const std::shared_ptr<const CallSignature> signature_;
  void (*code_)() = nullptr;
};

}  // namespace tavlen::loader
