#include "cli/arguments/RootOption.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/ExecutablePath.h"

namespace tavlen::cli {

namespace {

constexpr const char* kVariable = "TAVLEN_ROOT";

/// Why `text` is no prefix; empty if it is one. The paths below it must be the device's own.
std::string problemOfPrefix(const std::string& text) {
  const std::filesystem::path path = text;
  const bool leadsUp = std::find(path.begin(), path.end(), "..") != path.end();
  return path.is_absolute() && !leadsUp ? "" : "must be an absolute path without '..'";
}

}  // namespace

void addRootOptions(Command app, RootOptions& options) {
  app.text("--root", options.root,
           "The folder that represents the device's /; its programs are never run")
      .environmentVariable(kVariable)
      .notEmpty()
      .typeName("DIR");
  app.text("--prefix", options.prefix,
           "The device's folder in which a rootless jailbreak keeps programs and libraries")
      .environmentVariable("TAVLEN_PREFIX")
      .check(problemOfPrefix)
      .typeName("DIR");
}

void useRoot(const RootOptions& options) {
  const std::string& root = options.root;
  if (root.empty()) {
    if (!options.prefix.empty()) DeviceRoot::setShared(DeviceRoot("/", options.prefix));
    return;
  }
  if (!std::filesystem::is_directory(root)) {
    throw std::runtime_error("the device root, by --root or " + std::string(kVariable) + ", " +
                             root + ": not a folder");
  }
  const std::filesystem::path folder = std::filesystem::canonical(root);
  DeviceRoot::setShared(DeviceRoot(folder, options.prefix));
  // The tree's own programs are not run; the helper that came with this command does their work.
  DevicePrograms::setForOtherRoots({executablePath().parent_path() / "kvfileops", {}, {}});
  // The file-operations helper learns it from here. No other thread runs yet.
  ::setenv(kVariable, folder.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace tavlen::cli
