#include "kvfileops/FileHead.h"

#include <unistd.h>

#include <cerrno>

#include "kvfileops/Failure.h"

namespace tavlen::fileops {

std::string headOfFile(int file, std::size_t most, const std::filesystem::path& shown) {
  std::string bytes(most, '\0');
  std::size_t used = 0;
  while (used < most) {
    const ssize_t count = ::pread(file, bytes.data() + used, most - used, static_cast<off_t>(used));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(errno, shown);
    if (count == 0) break;
    used += static_cast<std::size_t>(count);
  }
  bytes.resize(used);
  return bytes;
}

}  // namespace tavlen::fileops
