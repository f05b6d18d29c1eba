// Manifests are untrusted input. Any manifest that can be read can be written, and reads back as
// the same manifest.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/tweaks/HookSource.h"
#include "tavlen/tweaks/Manifest.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using tavlen::TweakFile;
  TweakFile::Manifest manifest;
  try {
    manifest = tavlen::decodeJSON<TweakFile::Manifest>(
        std::string_view(reinterpret_cast<const char*>(data), size));
  } catch (const tavlen::DecodingError& error) {
    if (error.description().empty()) std::abort();
    return 0;
  }
  std::string written;
  try {
    written = tavlen::encodeJSON(manifest);
  } catch (const tavlen::EncodingError&) {
    // The decoder accepts one more level of nesting than the encoder. Only such a value can be read
    // but not written.
    if (size < 512) std::abort();
    return 0;
  }
  if (tavlen::decodeJSON<TweakFile::Manifest>(written) != manifest) std::abort();
  // Decoded values are UTF-8 and finite, so every hook has a source.
  tavlen::generateHookSource(manifest.hooks());
  return 0;
}
