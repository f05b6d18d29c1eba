#include <exception>

#include "tavlen/Version.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/tweaks/Manifest.h"

/// A shared library of another project, with the library inside: an error thrown there must be
/// caught by its type here.
extern "C" [[gnu::visibility("default")]] int plugin_rejects_malformed_manifests() {
  try {
    tavlen::decodeJSON<tavlen::TweakFile::Manifest>("{");
  } catch (const tavlen::DecodingError&) {
    return TAVLEN_VERSION_MAJOR >= 0 ? 1 : 0;
  } catch (const std::exception&) {
    return 0;
  }
  return 0;
}
