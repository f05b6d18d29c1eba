#include "cli/arguments/RootOption.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "tavlen/device/DeviceRoot.h"

namespace tavlen::cli {

namespace {

constexpr const char* kVariable = "TAVLEN_ROOT";

}  // namespace

void addRootOption(Command app, std::string& root) {
  app.text("--root", root, "The folder that represents the device's /")
      .environmentVariable(kVariable)
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
  // The file-operations helper reads it from its environment. No other thread runs yet.
  ::setenv(kVariable, folder.c_str(), 1);  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace tavlen::cli
