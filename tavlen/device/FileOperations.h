#pragma once

#include <filesystem>
#include <string>

#include "tavlen/foundation/base/API.h"

/// Calls of the privileged file-operations helper, for changes that this process may not make
/// itself.
///
/// Paths are resolved host paths. Each call blocks until the helper has ended, cannot be cancelled,
/// and throws Process::Error when it fails: posixSpawn(ENOENT) when it is missing. The helper reads
/// its device root from TAVLEN_ROOT in the environment that it inherits; set it together with
/// DeviceRoot. Threads: any.
namespace tavlen::FileOperations {

/// The path of the helper, as DevicePrograms names it. Empty if there is none.
TAVLEN_API std::filesystem::path helper();
/// Whether the helper exists and can be executed.
TAVLEN_API bool isAvailable();

/// Empties `directory`, an app's folder directly in the folder of installed tweaks. Also removes it
/// unless `isFollowedByTweak`.
TAVLEN_API void cleanUp(const std::filesystem::path& directory, bool isFollowedByTweak);
/// Copies `source` to `destination`. Both must have the same last component.
TAVLEN_API void copy(const std::filesystem::path& source, const std::filesystem::path& destination);
/// Copies the crash logs of the app `bundleID` to `directory`.
TAVLEN_API void fetchLogs(const std::string& bundleID, const std::filesystem::path& directory);

}  // namespace tavlen::FileOperations
