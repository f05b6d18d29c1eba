// Manifests are untrusted input. Any manifest that can be read can be written, and reads back as
// the same manifest. Memory and time stay in proportion to its bytes, also for a long list of
// copies of the input.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Budget.h"
#include "tavlen/collections/TweakCollectionManifest.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/tweaks/HookSource.h"
#include "tavlen/tweaks/Manifest.h"

using namespace tavlen;

namespace {

const std::string kConfiguration =
    R"({"configuration":{"name":"","color":"darkRed","bundleID":""},)";

/// What `bytes` hold, read within the budget; nothing where they are refused.
template <class Record>
std::optional<Record> decoded(std::string_view bytes) {
  std::optional<Record> record;
  try {
    fuzz::requireWithin({}, bytes.size(), [&] { record = decodeJSON<Record>(bytes); });
  } catch (const DecodingError& error) {
    if (error.description().empty()) std::abort();
  }
  return record;
}

/// So often that a vector of them has just grown, when it takes the most memory.
std::string repeated(std::string_view element) {
  constexpr std::size_t kShort = 16;
  const std::size_t count = (element.size() <= kShort ? std::size_t{1} << 16 : 1 << 12) + 1;
  std::string list(element);
  for (std::size_t i = 1; i < count; ++i) list.append(",").append(element);
  return list;
}

/// Reads a document that has `element` in its list, and if it is read one that has many.
template <class Record>
void readLists(const std::string& begin, std::string_view element, const std::string& end) {
  if (!decoded<Record>(begin + std::string(element) + end)) return;
  decoded<Record>(begin + repeated(element) + end);
}

void readLong(std::string_view element) {
  using Manifest = TweakFile::Manifest;
  readLists<TweakCollection::Manifest>(kConfiguration + R"("tweaks":[)", element, "]}");
  readLists<Manifest>(kConfiguration + R"("overrides":[],"hooks":[)", element, "]}");
  readLists<Manifest>(kConfiguration + R"("hooks":[],"overrides":[)", element, "]}");
  const std::string hook = kConfiguration +
                           R"("overrides":[],"hooks":[{"className":"","selector":"")"
                           R"(,"signature":"","isClassMethod":true,"args":{"0":{"type":)";
  readLists<Manifest>(hook + R"("Array","items":[)", element, "]}}}]}");
  readLists<Manifest>(hook + R"("Dictionary","items":[)", element, "]}}}]}");
}

void requireSameAfterWriting(const TweakFile::Manifest& manifest, std::size_t size) {
  std::string written;
  try {
    written = encodeJSON(manifest);
  } catch (const EncodingError&) {
    // The decoder accepts one more level of nesting than the encoder. Only such a value can be read
    // but not written.
    if (size < 512) std::abort();
    return;
  }
  if (decodeJSON<TweakFile::Manifest>(written) != manifest) std::abort();
  // What was decoded is UTF-8 and finite, so every hook has a source.
  generateHookSource(manifest.hooks());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (const auto manifest = decoded<TweakFile::Manifest>(bytes)) {
    requireSameAfterWriting(*manifest, size);
  }
  readLong(bytes);
  return 0;
}
