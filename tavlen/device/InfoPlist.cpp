#include "tavlen/device/InfoPlist.h"

#include <cerrno>
#include <cstddef>
#include <optional>
#include <system_error>

#include "tavlen/device/DeviceFiles.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen {

namespace {

/// Thousands of times the size that apps need. A sparse file of any size is quick to create.
constexpr std::size_t kLargestInfoPlist = std::size_t{16} << 20;

}  // namespace

std::string readInfoPlist(const DeviceRoot& root, const std::filesystem::path& bundle) {
  const std::filesystem::path file = bundle / kInfoPlistFilename;
  std::optional<std::string> bytes = readFileUpTo(openedFile(root, file), kLargestInfoPlist);
  if (!bytes) throw std::system_error(EFBIG, std::generic_category(), file.string());
  return std::move(*bytes);
}

}  // namespace tavlen
