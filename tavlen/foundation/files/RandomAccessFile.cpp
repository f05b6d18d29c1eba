#include "tavlen/foundation/files/RandomAccessFile.h"

#include <cerrno>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"

namespace tavlen {

RandomAccessFile::RandomAccessFile(const std::string& path, int folder)
    : RandomAccessFile(FileDescriptor::openAt(folder, path.c_str(), kOpenToRead, path), path) {}

RandomAccessFile::RandomAccessFile(FileDescriptor file, std::string path)
    : path_(std::move(path)), file_(std::move(file)) {
  const struct stat status = file_.status(path_);
  if (S_ISDIR(status.st_mode)) throwSystemError(EISDIR, path_);
  if (!S_ISREG(status.st_mode)) throwSystemError(EINVAL, path_ + ": not a regular file");
  size_ = static_cast<std::uint64_t>(status.st_size);
}

std::string RandomAccessFile::read(std::uint64_t offset, std::size_t count) const {
  std::string bytes(count, '\0');
  bytes.resize(readInto(offset, bytes));
  return bytes;
}

std::size_t RandomAccessFile::readInto(std::uint64_t offset, std::span<char> bytes) const {
  return file_.readAt(offset, bytes, path_);
}

}  // namespace tavlen
