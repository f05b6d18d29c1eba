#include "tavlen/device/FileOperations.h"

#include <utility>
#include <vector>

#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/Process.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::FileOperations {

namespace {

void run(std::vector<std::string> words) {
  const std::string path = helper().string();
  words.insert(words.begin(), path);
  Process process(path, std::move(words));
  process.launch();
  process.waitUntilExit();
}

}  // namespace

std::filesystem::path helper() { return DevicePrograms::shared().fileOperations; }

bool isAvailable() { return executableError(helper()) == 0; }

void cleanUp(const std::filesystem::path& directory, bool isFollowedByTweak) {
  run({"cleanup", directory.string(), isFollowedByTweak ? "1" : "0"});
}

void copy(const std::filesystem::path& source, const std::filesystem::path& destination) {
  run({"copy", source.string(), destination.string()});
}

void fetchLogs(const std::string& bundleID, const std::filesystem::path& directory) {
  run({"fetch-logs", bundleID, directory.string()});
}

}  // namespace tavlen::FileOperations
