#include "tavlen/device/DeviceRoot.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <optional>

namespace tavlen {

namespace {

/// What a rootless jailbreak keeps under its prefix.
constexpr std::array<std::string_view, 3> kPrefixedFolders = {"/bin", "/usr",
                                                              "/Applications/Marrowgleam.app"};

std::mutex sharedLock;
std::optional<DeviceRoot>& sharedRoot() {
  static std::optional<DeviceRoot> root;
  return root;
}

/// Absolute, without "." and "..", and without a slash at the end.
std::filesystem::path normalised(const std::filesystem::path& path) {
  std::filesystem::path normal = ("/" / path).lexically_normal();
  return normal.has_filename() || normal == "/" ? normal : normal.parent_path();
}

bool isInside(const std::filesystem::path& path, const std::filesystem::path& folder) {
  return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
         folder.end();
}

}  // namespace

DeviceRoot::DeviceRoot(const std::filesystem::path& root, std::string_view prefix)
    : root_(normalised(std::filesystem::absolute(root))) {
  if (!prefix.empty() && normalised(prefix) != "/") prefix_ = normalised(prefix);
}

DeviceRoot DeviceRoot::shared() {
  const std::lock_guard lock(sharedLock);
  return sharedRoot().value_or(DeviceRoot());
}

void DeviceRoot::setShared(DeviceRoot root) {
  const std::lock_guard lock(sharedLock);
  sharedRoot() = std::move(root);
}

std::filesystem::path DeviceRoot::resolve(std::string_view devicePath) const {
  std::filesystem::path path = normalised(devicePath);
  const auto holdsPath = [&](std::string_view folder) { return isInside(path, folder); };
  if (!prefix_.empty() &&
      std::any_of(kPrefixedFolders.begin(), kPrefixedFolders.end(), holdsPath)) {
    path = prefix_ / path.relative_path();
  }
  return path == "/" ? root_ : root_ / path.relative_path();
}

std::filesystem::path DeviceRoot::devicePath(const std::filesystem::path& path) const {
  const std::filesystem::path normal = normalised(path);
  if (!isInside(normal, root_)) return path;
  const std::filesystem::path relative = normal.lexically_relative(root_);
  return relative == "." ? std::filesystem::path("/") : "/" / relative;
}

}  // namespace tavlen
