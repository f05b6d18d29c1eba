#include "kvfileops/FileCopy.h"

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <vector>

#include "kvfileops/Failure.h"

namespace tavlen::fileops {

namespace {

void writeAll(int to, std::string_view bytes, const std::filesystem::path& shown) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(to, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(errno, shown);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

void copyBytes(int from, int to, std::uint64_t most, const std::filesystem::path& shown) {
  std::vector<char> buffer(std::size_t{64} << 10);
  for (;;) {
    const ssize_t count = ::read(from, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(errno, shown);
    if (count == 0) return;
    const auto size = static_cast<std::size_t>(count);
    if (size > most) fail(EFBIG, shown);
    most -= size;
    writeAll(to, {buffer.data(), size}, shown);
  }
}

}  // namespace tavlen::fileops
