#include "kvfileops/FileCopy.h"

#include <cerrno>
#include <cstddef>
#include <vector>

#include "tavlen/foundation/base/SystemError.h"

namespace tavlen::fileops {

void copyBytes(const FileDescriptor& from, const FileDescriptor& to, std::uint64_t most,
               const std::filesystem::path& shown) {
  std::vector<char> buffer(std::size_t{64} << 10);
  while (const std::size_t size = from.read(buffer, shown)) {
    if (size > most) throwSystemError(EFBIG, shown);
    most -= size;
    to.write({buffer.data(), size}, shown);
  }
}

}  // namespace tavlen::fileops
