#include "tavlen/device/detail/AppDisplayName.h"

#include <utility>

#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

std::string appDisplayName(FunctionRef<std::optional<std::string>(const char* key)> infoText,
                           const std::filesystem::path& bundle) {
  for (const char* key : {"CFBundleDisplayName", "CFBundleName"}) {
    std::optional<std::string> name = infoText(key);
    if (name) return std::move(*name);
  }
  // A folder's name is arbitrary bytes, but the result must be text.
  return wellFormedUTF8(bundle.stem().native());
}

}  // namespace tavlen
