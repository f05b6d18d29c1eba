#pragma once

#include <fcntl.h>

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// A regular file that is open for reading, anywhere in it.
///
/// Errors are std::system_error with the path in the text. The descriptor is close-on-exec.
/// Threads: reads may run side by side.
class RandomAccessFile {
 public:
  /// A symbolic link is followed; a folder (EISDIR) and anything else that is no regular file
  /// (EINVAL) are refused, and a pipe never blocks.
  explicit RandomAccessFile(const std::filesystem::path& path) : RandomAccessFile(path.string()) {}
  /// The same for a path's text, relative to the folder that is open as `folder`.
  explicit RandomAccessFile(std::string path, int folder = AT_FDCWD);
  /// Takes over a file opened with kOpenToRead, which errors call `path`. Refuses as above.
  RandomAccessFile(FileDescriptor file, std::string path);

  /// As errors name it.
  const std::string& path() const { return path_; }
  /// In bytes, when it was opened.
  std::uint64_t size() const { return size_; }
  /// The bytes from `offset` on, `count` of them or as many as the file has there.
  std::string read(std::uint64_t offset, std::size_t count) const;
  /// The same into memory of the caller's; gives how many bytes there were.
  std::size_t readInto(std::uint64_t offset, std::span<char> bytes) const;

 private:
  std::string path_;
  FileDescriptor file_;
  std::uint64_t size_ = 0;
};

}  // namespace tavlen
