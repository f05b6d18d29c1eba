// A manifest comes from anybody. What is read as one is written again, and reads back as the same.
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
    // One container more may be read than written: the only value that is read and not written.
    if (size < 512) std::abort();
    return 0;
  }
  if (tavlen::decodeJSON<TweakFile::Manifest>(written) != manifest) std::abort();
  // What was decoded is UTF-8 and finite, so every hook has a source.
  tavlen::generateHookSource(manifest.hooks());
  return 0;
}
