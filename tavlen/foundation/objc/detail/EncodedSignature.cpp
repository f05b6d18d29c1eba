#include "tavlen/foundation/objc/detail/EncodedSignature.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <utility>

#include "tavlen/foundation/objc/MethodTypes.h"
#include "tavlen/foundation/objc/detail/TypeLayout.h"
#include "tavlen/foundation/objc/detail/TypeScanner.h"

namespace tavlen {

namespace {

class EncodedSignature : public MethodSignature {
 public:
  explicit EncodedSignature(std::string_view encoding) : encoding_(encoding) {}

  /// Parses the encoding. Returns false when it has no signature.
  bool read() {
    auto types = splitMethodTypes(encoding_);
    if (!types) return false;
    types_ = std::move(*types);
    const auto result = layoutOfType(types_.result);
    if (!result) return false;
    returnLength_ = result->size;
    return std::all_of(types_.arguments.begin(), types_.arguments.end(),
                       [](std::string_view type) { return layoutOfType(type).has_value(); });
  }

  std::size_t numberOfArguments() const override { return types_.arguments.size(); }
  std::size_t frameLength() const override { return 224; }
  bool isOneway() const override {
    return TypeScanner(types_.result).skipQualifiers().find('V') != std::string_view::npos;
  }
  std::size_t methodReturnLength() const override { return returnLength_; }
  std::string getArgumentTypeAtIndex(std::size_t index) const override {
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
           ", frame: " + std::to_string(frameLength()) +
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
  MethodTypes types_;  // views into encoding_
  std::size_t returnLength_ = 0;
};

}  // namespace

std::shared_ptr<const MethodSignature> encodedSignature(std::string_view encoding) {
  const auto signature = std::make_shared<EncodedSignature>(encoding);
  if (!signature->read()) return nullptr;
  return signature;
}

}  // namespace tavlen
