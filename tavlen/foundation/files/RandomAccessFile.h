#pragma once

#include <fcntl.h>

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// A regular file open for reading at any offset.
///
/// Errors are std::system_error with the path in the text. The descriptor is close-on-exec.
/// Threads: reads may run concurrently.
class TAVLEN_API RandomAccessFile {
 public:
  /// Opens a file. A symbolic link is followed. A folder (EISDIR) and anything else that is not a
  /// regular file (EINVAL) are refused; a pipe never blocks.
  explicit RandomAccessFile(const std::filesystem::path& path) : RandomAccessFile(path.string()) {}
  /// The same for a path given as text, relative to the open folder `folder`.
  explicit RandomAccessFile(const std::string& path, int folder = AT_FDCWD);
  /// Takes over a file opened with kOpenToRead, which errors call `path`. Refuses as above.
  RandomAccessFile(FileDescriptor file, std::string path);

  /// The path for error texts.
  const std::string& path() const { return path_; }
  /// The size in bytes when the file was opened.
  std::uint64_t size() const { return size_; }
  /// Returns `count` bytes from `offset` on, or fewer where the file ends.
  std::string read(std::uint64_t offset, std::size_t count) const;
  /// The same into the caller's memory; returns the number of bytes.
  std::size_t readInto(std::uint64_t offset, std::span<char> bytes) const;

 private:
  std::string path_;
  FileDescriptor file_;
  std::uint64_t size_ = 0;
};

}  // namespace tavlen
