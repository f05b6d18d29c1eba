#include "tavlen/foundation/objc/detail/EncodedSignature.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <utility>

#include "tavlen/foundation/objc/MethodTypes.h"
#include "tavlen/foundation/objc/detail/TypeLayout.h"
#include "tavlen/foundation/objc/detail/TypeScanner.h"

namespace tavlen {

namespace {

/// Hands out the argument registers, and the stack behind them.
class ArgumentFrame {
 public:
  void add(const TypeLayout& argument) {
    constexpr std::uint64_t kLargestByValue = 16;
    constexpr std::uint64_t kMostFloats = 4;
    using Kind = TypeLayout::Kind;
    if (argument.size == 0 && argument.kind != Kind::array) return;
    const std::uint64_t floats = argument.floatSize > 0 ? argument.size / argument.floatSize : 0;
    const std::uint64_t words = (argument.size + kWord - 1) / kWord;
    if (argument.kind != Kind::array && floats > 0 && floats <= kMostFloats) {
      take(floating_, floats, {argument.size, argument.alignment});
    } else if (argument.kind == Kind::scalar) {
      take(general_, words, {argument.size, argument.alignment});
    } else if (argument.kind == Kind::structure && argument.size <= kLargestByValue) {
      take(general_, words, {words * kWord, std::max(kWord, argument.alignment)});
    } else {
      take(general_, 1, {kWord, kWord});
    }
  }

  std::uint64_t length() const {
    constexpr std::uint64_t kWithoutStack = 224;
    return kWithoutStack + roundedUp(stack_, kWord);
  }

 private:
  static constexpr std::uint64_t kWord = 8;
  static constexpr std::uint64_t kRegisters = 8;

  struct Space {
    std::uint64_t size;
    std::uint64_t alignment;
  };

  /// An argument lies in registers as a whole or on the stack; after the first one there, none of
  /// its kind has a register.
  void take(std::uint64_t& used, std::uint64_t count, Space onStack) {
    if (count <= kRegisters - used) {
      used += count;
    } else {
      used = kRegisters;
      stack_ = roundedUp(stack_, onStack.alignment) + onStack.size;
    }
  }

  std::uint64_t general_ = 0;
  std::uint64_t floating_ = 0;
  std::uint64_t stack_ = 0;
};

class EncodedSignature : public SignatureObject {
 public:
  explicit EncodedSignature(std::string_view encoding) : encoding_(encoding) {}

  /// False for an encoding without a signature.
  bool read() {
    auto types = splitMethodTypes(encoding_);
    if (!types) return false;
    types_ = std::move(*types);
    const auto result = layoutOfType(types_.result);
    if (!result) return false;
    returnLength_ = result->size;
    ArgumentFrame frame;
    for (const std::string_view type : types_.arguments) {
      const auto argument = layoutOfType(type);
      if (!argument) return false;
      frame.add(*argument);
    }
    frameLength_ = frame.length();
    return true;
  }

  std::size_t numberOfArguments() const override { return types_.arguments.size(); }
  std::size_t frameLength() const override { return frameLength_; }
  bool isOneway() const override {
    return TypeScanner(types_.result).skipQualifiers().find('V') != std::string_view::npos;
  }
  std::size_t methodReturnLength() const override { return returnLength_; }
  std::string argumentTypeAtIndex(std::size_t index) const override {
    if (index >= types_.arguments.size()) {
      throw std::out_of_range("the method has no argument " + std::to_string(index));
    }
    return std::string(types_.arguments[index]);
  }
  std::string methodReturnType() const override { return std::string(types_.result); }
  std::string description() const override { return "<MethodSignature: " + joinedTypes() + ">"; }
  std::string debugDescription() const override {
    return "<MethodSignature: " + joinedTypes() +
           "; arguments: " + std::to_string(numberOfArguments()) +
           ", frame: " + std::to_string(frameLength_) +
           " bytes, result: " + std::to_string(returnLength_) + " bytes>";
  }

 private:
  /// The encoding without its offsets.
  std::string joinedTypes() const {
    std::string joined(types_.result);
    for (const std::string_view type : types_.arguments) joined += type;
    return joined;
  }

  std::string encoding_;
  MethodTypes types_;  // views into the encoding
  std::size_t returnLength_ = 0;
  std::size_t frameLength_ = 0;
};

}  // namespace

std::shared_ptr<const SignatureObject> encodedSignature(std::string_view encoding) {
  const auto signature = std::make_shared<EncodedSignature>(encoding);
  if (!signature->read()) return nullptr;
  return signature;
}

}  // namespace tavlen
