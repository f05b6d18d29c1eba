#include "tavlen/device/DeviceRoot.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <deque>
#include <mutex>
#include <system_error>
#include <utility>

namespace tavlen {

namespace {

/// The folders that a rootless jailbreak keeps below its prefix.
constexpr std::array<std::string_view, 3> kPrefixedFolders = {"/bin", "/usr",
                                                              "/Applications/Marrowgleam.app"};

std::mutex sharedLock;
/// Never destroyed: other threads may use it while the process ends.
DeviceRoot& sharedRoot() {
  static DeviceRoot& root = *new DeviceRoot;
  return root;
}

/// Makes a path absolute, without "." and "..", and without a trailing slash.
std::filesystem::path normalised(const std::filesystem::path& path) {
  std::filesystem::path normal = ("/" / path).lexically_normal();
  return normal.has_filename() || normal == "/" ? normal : normal.parent_path();
}

bool isInside(const std::filesystem::path& path, const std::filesystem::path& folder) {
  return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
         folder.end();
}

/// Inserts the components of `path` before those of `rest`.
void putBefore(std::deque<std::filesystem::path>& rest, const std::filesystem::path& path) {
  const std::filesystem::path relative = path.relative_path();
  rest.insert(rest.begin(), relative.begin(), relative.end());
}

/// Resolves the symbolic links in `path`, an absolute path on the device, as the device does: an
/// absolute target starts at `root` again, and ".." stops there. Missing components are kept.
std::filesystem::path withoutLinks(const std::filesystem::path& root,
                                   const std::filesystem::path& path) {
  constexpr int kMostLinks = 40;
  int links = 0;
  std::filesystem::path followed = "/";
  std::deque<std::filesystem::path> rest;
  putBefore(rest, path);
  while (!rest.empty()) {
    const std::filesystem::path name = std::move(rest.front());
    rest.pop_front();
    if (name.empty() || name == ".") continue;
    if (name == "..") {
      followed = followed.parent_path();
      continue;
    }
    std::error_code noLink;
    const std::filesystem::path target =
        std::filesystem::read_symlink(root / followed.relative_path() / name, noLink);
    if (noLink) {
      followed /= name;
      continue;
    }
    if (++links > kMostLinks) {
      throw std::system_error(ELOOP, std::generic_category(),
                              (root / path.relative_path()).string());
    }
    if (target.is_absolute()) followed = "/";
    putBefore(rest, target);
  }
  return followed;
}

}  // namespace

DeviceRoot::DeviceRoot(const std::filesystem::path& root, std::string_view prefix)
    : root_(normalised(std::filesystem::absolute(root))) {
  if (!prefix.empty() && normalised(prefix) != "/") prefix_ = normalised(prefix);
}

DeviceRoot DeviceRoot::shared() {
  const std::lock_guard lock(sharedLock);
  return sharedRoot();
}

void DeviceRoot::setShared(DeviceRoot root) {
  const std::lock_guard lock(sharedLock);
  sharedRoot() = std::move(root);
}

std::filesystem::path DeviceRoot::resolve(std::string_view devicePath) const {
  std::filesystem::path path = normalised(devicePath);
  const auto holdsPath = [&](std::string_view folder) { return isInside(path, folder); };
  if (!prefix_.empty() && !isInside(path, prefix_) &&
      std::any_of(kPrefixedFolders.begin(), kPrefixedFolders.end(), holdsPath)) {
    path = prefix_ / path.relative_path();
  }
  if (!isDevice()) path = withoutLinks(root_, path);
  return path == "/" ? root_ : root_ / path.relative_path();
}

std::filesystem::path DeviceRoot::follow(const std::filesystem::path& path) const {
  if (isDevice() || !isInside(normalised(std::filesystem::absolute(path)), root_)) return path;
  return resolve(devicePath(std::filesystem::absolute(path)).native());
}

std::filesystem::path DeviceRoot::devicePath(const std::filesystem::path& path) const {
  if (path.is_relative()) return path;
  const std::filesystem::path normal = normalised(path);
  if (!isInside(normal, root_)) return path;
  const std::filesystem::path relative = normal.lexically_relative(root_);
  return relative == "." ? std::filesystem::path("/") : "/" / relative;
}

}  // namespace tavlen
