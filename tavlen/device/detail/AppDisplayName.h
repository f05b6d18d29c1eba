#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen {

/// The name to show for the app in the folder `bundle`: its display name, else its bundle name,
/// else the folder's name without extension. `infoText` returns the text under a key of the app's
/// Info.plist, or nothing.
std::string appDisplayName(FunctionRef<std::optional<std::string>(const char* key)> infoText,
                           const std::filesystem::path& bundle);

}  // namespace tavlen
