#include "tavlen/foundation/files/FileDescriptor.h"

#ifdef __linux__
#include <linux/openat2.h>
#include <sys/syscall.h>
#endif

#include <cerrno>
#include <limits>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/DiskSync.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen {

namespace {

constexpr std::uint64_t kLargestOffset = std::numeric_limits<off_t>::max();

/// Writes all of `bytes`. `write` is called with the remaining bytes and returns what the system
/// call returns.
template <class Write>
void writeAll(std::string_view bytes, const std::string& shown, const Write& write) {
  while (!bytes.empty()) {
    const ssize_t count = retryOnInterrupt([&] { return write(bytes); });
    // A write of zero bytes would be repeated for ever.
    if (count <= 0) throwSystemError(count < 0 ? errno : EIO, shown);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

FileDescriptor FileDescriptor::open(const std::filesystem::path& path, int flags, mode_t mode) {
  return openAt(AT_FDCWD, path.c_str(), flags, path, mode);
}

FileDescriptor FileDescriptor::openAt(int parent, const char* name, int flags,
                                      const std::string& shown, mode_t mode) {
  FileDescriptor opened = tryOpenAt(parent, name, flags, mode);
  if (!opened) throwSystemError(shown);
  return opened;
}

FileDescriptor FileDescriptor::tryOpenAt(int parent, const char* name, int flags, mode_t mode) {
  return FileDescriptor(
      retryOnInterrupt([&] { return ::openat(parent, name, flags | O_CLOEXEC, mode); }));
}

FileDescriptor FileDescriptor::tryOpenBelow(int parent, const std::string& path, int flags,
                                            mode_t mode) {
  flags |= O_NOFOLLOW;
#ifdef SYS_openat2
  // One call instead of two for each component, which readers of thousands of files notice. An
  // older kernel, or a sandbox, may not know it.
  open_how how{};
  how.flags = static_cast<unsigned>(flags | O_CLOEXEC);
  how.mode = (flags & O_CREAT) != 0 ? mode : 0;
  how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_BENEATH;
  FileDescriptor opened(static_cast<int>(retryOnInterrupt(
      [&] { return ::syscall(SYS_openat2, parent, path.c_str(), &how, sizeof how); })));
  if (opened || (errno != ENOSYS && errno != EPERM)) return opened;
#endif
  FileDescriptor folder;
  std::size_t begin = 0;
  for (std::size_t slash = path.find('/'); slash != std::string::npos;
       slash = path.find('/', begin)) {
    folder = tryOpenAt(parent, path.substr(begin, slash - begin).c_str(), kOpenToPass);
    if (!folder) return folder;
    parent = folder.get();
    begin = slash + 1;
  }
  return tryOpenAt(parent, path.substr(begin).c_str(), flags, mode);
}

struct stat FileDescriptor::status(const std::string& shown) const {
  struct stat status {};
  if (::fstat(value_, &status) != 0) throwSystemError(shown);
  return status;
}

void FileDescriptor::setMode(mode_t mode, const std::string& shown) const {
  if (::fchmod(value_, mode) != 0) throwSystemError(shown);
}

std::size_t FileDescriptor::read(std::span<char> bytes, const std::string& shown) const {
  const ssize_t count =
      retryOnInterrupt([&] { return ::read(value_, bytes.data(), bytes.size()); });
  if (count < 0) throwSystemError(shown);
  return static_cast<std::size_t>(count);
}

std::size_t FileDescriptor::readAt(std::uint64_t offset, std::span<char> bytes,
                                   const std::string& shown) const {
  if (offset >= kLargestOffset) return 0;
  std::size_t used = 0;
  while (used < bytes.size()) {
    const ssize_t count = retryOnInterrupt([&] {
      return ::pread(value_, bytes.data() + used, bytes.size() - used,
                     static_cast<off_t>(offset + used));
    });
    if (count < 0) throwSystemError(shown);
    if (count == 0) break;
    used += static_cast<std::size_t>(count);
  }
  return used;
}

void FileDescriptor::write(std::string_view bytes, const std::string& shown) const {
  writeAll(bytes, shown,
           [&](std::string_view rest) { return ::write(value_, rest.data(), rest.size()); });
}

void FileDescriptor::writeAt(std::uint64_t offset, std::string_view bytes,
                             const std::string& shown) const {
  writeAll(bytes, shown, [&](std::string_view rest) {
    const std::uint64_t position = offset + (bytes.size() - rest.size());
    return ::pwrite(value_, rest.data(), rest.size(), static_cast<off_t>(position));
  });
}

void FileDescriptor::sync(const std::string& shown) const {
  if (syncDescriptor(value_) != 0) throwSystemError(shown);
}

void FileDescriptor::close(const std::string& shown) {
  if (::close(release()) != 0 && errno != EINTR) throwSystemError(shown);
}

}  // namespace tavlen
