// Anything read from a keyed archive can be written and reads back unchanged; memory and time stay
// in proportion to its bytes.
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "fuzz/Budget.h"
#include "tavlen/device/TweakInfo.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/introspection/classes/ObjCClass.h"

using namespace tavlen;

namespace {

template <class T>
void requireSameAfterWriting(std::string_view bytes) {
  T value;
  try {
    fuzz::requireWithin({}, bytes.size(), [&] { value = decodeKeyedArchive<T>(bytes); });
  } catch (const DecodingError&) {
    return;  // refused, which is an answer
  }
  if (!(decodeKeyedArchive<T>(encodeKeyedArchive(value)) == value)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  requireSameAfterWriting<std::vector<ObjCClass>>(bytes);
  requireSameAfterWriting<TweakInfo>(bytes);
  return 0;
}
