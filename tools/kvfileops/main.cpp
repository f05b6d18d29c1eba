// The reference file-operations helper. Its exit status is its answer: 0 when everything was done,
// 1 when something was not, 2 when the command was not understood. Standard error says why.
#include <array>
#include <exception>
#include <string>
#include <string_view>

#include "kvfileops/Cleanup.h"
#include "kvfileops/Copy.h"
#include "kvfileops/DeviceFolder.h"
#include "kvfileops/FetchLogs.h"
#include "kvfileops/OwnState.h"
#include "tavlen/foundation/text/Log.h"

namespace {

using tavlen::DeviceRoot;
namespace fileops = tavlen::fileops;

enum Status { kDone = 0, kFailed = 1, kMisused = 2 };

using Job = Status (*)(const DeviceRoot& root, const std::string& first, const std::string& second);

Status cleanUp(const DeviceRoot& root, const std::string& path, const std::string& flag) {
  if (flag != "0" && flag != "1") return kMisused;
  fileops::cleanUp(
      root, path,
      flag == "1" ? fileops::AfterCleanup::emptyFolder : fileops::AfterCleanup::nothing);
  return kDone;
}

Status copy(const DeviceRoot& root, const std::string& source, const std::string& destination) {
  fileops::copy(root, source, destination);
  return kDone;
}

Status fetchLogs(const DeviceRoot& root, const std::string& bundleID, const std::string& folder) {
  return fileops::fetchLogs(root, bundleID, folder) ? kDone : kFailed;
}

struct Command {
  std::string_view word;
  Job job;
};

constexpr std::array<Command, 3> kCommands = {
    {{"cleanup", cleanUp}, {"copy", copy}, {"fetch-logs", fetchLogs}}};

Status run(int count, char** words) {
  if (count != 4) return kMisused;
  for (const Command& command : kCommands) {
    if (command.word == words[1]) {
      return command.job(fileops::rootFromEnvironment(), words[2], words[3]);
    }
  }
  return kMisused;
}

}  // namespace

int main(int count, char** words) {
  fileops::takeOwnState();
  try {
    const Status status = run(count, words);
    if (status == kMisused) {
      tavlen::logToStandardError(
          "kvfileops: usage: kvfileops cleanup PATH 0|1 | copy SOURCE DESTINATION | "
          "fetch-logs BUNDLE-ID FOLDER");
    }
    return status;
  } catch (const std::exception& error) {
    tavlen::logToStandardError(std::string("kvfileops: ") + error.what());
    return kFailed;
  }
}
