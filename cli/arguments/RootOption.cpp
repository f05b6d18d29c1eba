#include "cli/arguments/RootOption.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/ExecutablePath.h"

namespace tavlen::cli {

namespace {

constexpr const char* kVariable = "TAVLEN_ROOT";

}  // namespace

void addRootOption(Command app, std::string& root) {
  app.text("--root", root, "The folder that represents the device's /; its programs are never run")
      .environmentVariable(kVariable)
      .notEmpty()
      .typeName("DIR");
}

void useRoot(const std::string& root) {
  if (root.empty()) return;
  if (!std::filesystem::is_directory(root)) {
    throw std::runtime_error("the device root, by --root or " + std::string(kVariable) + ", " +
                             root + ": not a folder");
  }
  const std::filesystem::path folder = std::filesystem::canonical(root);
  DeviceRoot::setShared(DeviceRoot(folder));
  // The tree's own programs are not run; the helper that came with this command does their work.
  DevicePrograms::setForOtherRoots({executablePath().parent_path() / "kvfileops", {}, {}});
  // The file-operations helper learns it from here. No other thread runs yet.
  ::setenv(kVariable, folder.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace tavlen::cli
