#pragma once

#include <filesystem>
#include <system_error>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen {

/// Calls `visit` for every entry below `folder`, a folder before its entries. Links are not
/// followed. For an entry that is a folder, `visit` returns whether its entries are wanted. `fail`
/// is called for a folder that cannot be read, or not to its end; the walk goes on with the others.
/// What the two throw ends it. Stack use does not grow with the depth. Threads: any.
TAVLEN_API void walkFolder(
    const std::filesystem::path& folder,
    FunctionRef<bool(const std::filesystem::directory_entry& entry)> visit,
    FunctionRef<void(const std::filesystem::path& folder, std::error_code error)> fail);

}  // namespace tavlen
