#include "tavlen/device/DeviceRoot.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <deque>
#include <mutex>
#include <system_error>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileSystem.h"

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
  const auto holdsPath = [&](std::string_view folder) { return isAtOrBelow(path, folder); };
  if (!prefix_.empty() && !isAtOrBelow(path, prefix_) &&
      std::any_of(kPrefixedFolders.begin(), kPrefixedFolders.end(), holdsPath)) {
    path = prefix_ / path.relative_path();
  }
  if (!isDevice()) path = withoutLinks(root_, path);
  return path == "/" ? root_ : root_ / path.relative_path();
}

std::optional<std::string> DeviceRoot::relativeToRoot(const std::string& text) const {
  if (isDevice() || text.empty()) return std::nullopt;
  const std::size_t length = root_.native().size();
  const bool isPlain = text.find("/.") == text.npos && text.find("//") == text.npos;
  // The usual form, for which this function is fast: no component is looked at.
  if (isPlain && text.size() > length + 1 && text[length] == '/' && text.back() != '/' &&
      text.starts_with(root_.native())) {
    return text.substr(length + 1);
  }
  const std::filesystem::path normal = normalised(std::filesystem::absolute(text));
  if (!isAtOrBelow(normal, root_)) return std::nullopt;
  return normal.lexically_relative(root_).string();
}

bool DeviceRoot::hasOwnLinksAt(const std::filesystem::path& path) const {
  return relativeToRoot(path.native()).has_value();
}

std::filesystem::path DeviceRoot::follow(const std::filesystem::path& path) const {
  if (!hasOwnLinksAt(path)) return path;
  const std::filesystem::path inRoot = devicePath(std::filesystem::absolute(path));
  return root_ / withoutLinks(root_, inRoot).relative_path();
}

std::filesystem::path DeviceRoot::followParent(const std::filesystem::path& path) const {
  if (!hasOwnLinksAt(path)) return path;
  const std::filesystem::path normal = normalised(std::filesystem::absolute(path));
  return normal == root_ ? root_ : follow(normal.parent_path()) / normal.filename();
}

FileDescriptor DeviceRoot::open(const std::string& path, int flags, mode_t mode) const {
  const std::optional<std::string> inRoot = relativeToRoot(path);
  if (!inRoot) return FileDescriptor::openAt(AT_FDCWD, path.c_str(), flags, path, mode);
  const FileDescriptor root = FileDescriptor::open(root_, kOpenToPass & ~O_NOFOLLOW);
  FileDescriptor opened = FileDescriptor::tryOpenBelow(root.get(), *inRoot, flags, mode);
  // Few paths hold links, and those that do not are opened at the first attempt.
  if (!opened && (errno == ELOOP || errno == ENOTDIR)) {
    const bool isLastFollowed = (flags & O_NOFOLLOW) == 0;
    const std::filesystem::path target = isLastFollowed ? follow(path) : followParent(path);
    const std::filesystem::path relative = target.lexically_relative(root_);
    opened = FileDescriptor::tryOpenBelow(root.get(), relative.native(), flags, mode);
  }
  if (!opened) throwSystemError(path);
  return opened;
}

std::filesystem::file_status DeviceRoot::status(const std::filesystem::path& path) const {
  std::error_code error;
  if (!hasOwnLinksAt(path)) return std::filesystem::status(path, error);
  try {
    return std::filesystem::symlink_status(follow(path), error);
  } catch (const std::system_error&) {
    return std::filesystem::file_status(std::filesystem::file_type::not_found);
  }
}

std::filesystem::path DeviceRoot::devicePath(const std::filesystem::path& path) const {
  if (path.is_relative()) return path;
  const std::filesystem::path normal = normalised(path);
  if (!isAtOrBelow(normal, root_)) return path;
  const std::filesystem::path relative = normal.lexically_relative(root_);
  return relative == "." ? std::filesystem::path("/") : "/" / relative;
}

}  // namespace tavlen
