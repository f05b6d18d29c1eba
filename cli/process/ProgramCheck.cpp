#include "cli/process/ProgramCheck.h"

#include <stdexcept>
#include <system_error>

#include "tavlen/device/DeviceRoot.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::cli {

void requireProgram(const std::filesystem::path& program) {
  const int error = executableError(program);
  if (error != 0) throw std::system_error(error, std::generic_category(), program.string());
}

void requireRunningDevice() {
  const DeviceRoot root = DeviceRoot::shared();
  if (root.isDevice()) return;
  throw std::runtime_error("not a running device: " + root.url().string() +
                           " is a tree of files, in which no program runs");
}

}  // namespace tavlen::cli
