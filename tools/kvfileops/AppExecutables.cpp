#include "kvfileops/AppExecutables.h"

#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "kvfileops/CallerRights.h"
#include "tavlen/device/DirectoryAppListFetcher.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::fileops {

namespace {

/// The list of apps skips a folder that it cannot read without an error.
void requireReadable(const DeviceRoot& root, std::string_view devicePath) {
  const std::filesystem::path folder = root.resolve(devicePath);
  std::error_code error;
  const std::filesystem::directory_iterator opened(folder, error);
  if (error && error != std::errc::no_such_file_or_directory)
    throwSystemError(error.value(), folder);
}

}  // namespace

std::set<std::string> executablesOfApp(const DeviceRoot& root, const std::string& bundleID) {
  const CallerRights rights;
  requireReadable(root, "/Applications");
  requireReadable(root, "/var/containers/Bundle/Application");
  std::set<std::string> executables;
  const auto visit = [&](const AppListApp& app, const PropertyList& info) {
    if (app.bundleID != bundleID) return;
    const auto executable = info.findString(info.root(), "CFBundleExecutable");
    if (executable && isPlainComponent(*executable)) executables.emplace(*executable);
  };
  DirectoryAppListFetcher(root).visitAllApps(visit);
  return executables;
}

}  // namespace tavlen::fileops
