#include "tavlen/foundation/files/RandomAccessFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <system_error>
#include <utility>

#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen {

namespace {

constexpr std::uint64_t kLargestOffset = std::numeric_limits<off_t>::max();

}  // namespace

RandomAccessFile::RandomAccessFile(std::string path)
    // Without O_NONBLOCK a pipe that nobody writes to would never be opened.
    : path_(std::move(path)), descriptor_(retryOnInterrupt([this] {
        return ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
      })) {
  if (descriptor_ < 0) fail(errno);
  struct stat status {};
  int code = ::fstat(descriptor_, &status) == 0 ? 0 : errno;
  if (code == 0 && S_ISDIR(status.st_mode)) code = EISDIR;
  if (code == 0 && !S_ISREG(status.st_mode)) {
    code = EINVAL;
    path_ += ": not a regular file";
  }
  if (code != 0) {
    ::close(descriptor_);
    fail(code);
  }
  size_ = static_cast<std::uint64_t>(status.st_size);
}

RandomAccessFile::~RandomAccessFile() { ::close(descriptor_); }

std::string RandomAccessFile::read(std::uint64_t offset, std::size_t count) const {
  if (offset >= kLargestOffset) return {};
  std::string bytes(count, '\0');
  bytes.resize(readInto(offset, bytes));
  return bytes;
}

std::size_t RandomAccessFile::readInto(std::uint64_t offset, std::span<char> bytes) const {
  if (offset >= kLargestOffset) return 0;
  std::size_t used = 0;
  while (used < bytes.size()) {
    const ssize_t got = ::pread(descriptor_, bytes.data() + used, bytes.size() - used,
                                static_cast<off_t>(offset + used));
    if (got == 0) break;
    if (got > 0) {
      used += static_cast<std::size_t>(got);
    } else if (errno != EINTR) {
      fail(errno);
    }
  }
  return used;
}

void RandomAccessFile::fail(int code) const {
  throw std::system_error(code, std::generic_category(), path_);
}

}  // namespace tavlen
