// The types of a signature, concatenated without their offsets, read as the same signature.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/Budget.h"
#include "tavlen/foundation/objc/MethodTypes.h"
#include "tavlen/foundation/objc/detail/EncodedSignature.h"

using namespace tavlen;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view encoding(reinterpret_cast<const char*>(data), size);
  std::shared_ptr<const MethodSignature> signature;
  fuzz::requireWithin({}, size, [&] { signature = encodedSignature(encoding); });
  const auto split = splitMethodTypes(encoding);
  if (signature == nullptr) return 0;  // refused, which is an answer
  require(split && split->arguments.size() == signature->numberOfArguments());
  std::string types = signature->methodReturnType();
  for (std::size_t i = 0; i < signature->numberOfArguments(); ++i) {
    types += signature->getArgumentTypeAtIndex(i);
  }
  const auto again = encodedSignature(types);
  require(again != nullptr && again->description() == signature->description() &&
          again->debugDescription() == signature->debugDescription());
  return 0;
}
