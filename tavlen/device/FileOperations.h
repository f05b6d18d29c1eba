#pragma once

#include <filesystem>
#include <string>

/// The calls of the privileged file-operations helper, which does what the library itself may not.
///
/// Paths are host paths, already resolved. Each blocks until the helper has ended and throws
/// Process::Error for its failure: posixSpawn(ENOENT) where it is missing. The helper takes its
/// device root from TAVLEN_ROOT in the environment, which it inherits; whoever sets another root
/// sets that, too. Threads: any.
namespace tavlen::FileOperations {

/// Where the helper lies: DevicePrograms tells. Empty where there is none.
std::filesystem::path helper();
/// Whether a program is there.
bool isAvailable();

/// Leaves `directory`, which lies directly in the folder of installed tweaks, empty when a tweak
/// follows, and gone when none does.
void cleanUp(const std::filesystem::path& directory, bool isFollowedByTweak);
/// Copies `source` to `destination`, whose last component is the source's.
void copy(const std::filesystem::path& source, const std::filesystem::path& destination);
/// Gathers the crash logs of the app in `directory`.
void fetchLogs(const std::string& bundleID, const std::filesystem::path& directory);

}  // namespace tavlen::FileOperations
