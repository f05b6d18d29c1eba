#include "tavlen/foundation/files/DiskSync.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen {

namespace {

/// Gives 0, or why not, as errno tells it.
int sync(const std::filesystem::path& path, int flags) {
  const int descriptor =
      retryOnInterrupt([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | flags); });
  if (descriptor < 0) return errno;
  const int code = retryOnInterrupt([&] { return ::fsync(descriptor); }) == 0 ? 0 : errno;
  ::close(descriptor);
  return code;
}

}  // namespace

void syncFile(const std::filesystem::path& file) {
  // Never to wait for a pipe's other end.
  const int code = sync(file, O_NONBLOCK | O_NOCTTY);
  if (code != 0) throw std::system_error(code, std::generic_category(), file.string());
}

void syncFolder(const std::filesystem::path& folder) { (void)sync(folder, O_DIRECTORY); }

}  // namespace tavlen
