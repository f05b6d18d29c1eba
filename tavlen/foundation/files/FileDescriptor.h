#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Flags to open a folder; a symbolic link to a folder is refused.
inline constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW;
/// Flags to open for reading, through symbolic links, without waiting for the other end of a pipe.
inline constexpr int kOpenToRead = O_RDONLY | O_NONBLOCK | O_NOCTTY;
/// Flags to create a file for writing; anything that exists, even a link, is an error.
inline constexpr int kOpenNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
/// A folder as the start of other calls; where the system can, without the right to list it.
#if defined(O_PATH)
inline constexpr int kOpenToPass = O_PATH | O_DIRECTORY | O_NOFOLLOW;
#elif defined(O_SEARCH)
inline constexpr int kOpenToPass = O_SEARCH | O_DIRECTORY | O_NOFOLLOW;
#else
inline constexpr int kOpenToPass = kOpenFolder;
#endif

/// Owns an open file descriptor, or none (-1).
///
/// Calls interrupted by a signal are retried. Errors are std::system_error with `shown`, the path
/// for the reader. Threads: as for the system calls.
class TAVLEN_API FileDescriptor {
 public:
  /// Takes ownership of `value`; -1 for none.
  explicit FileDescriptor(int value = -1) : value_(value) {}
  /// Leaves `other` empty.
  FileDescriptor(FileDescriptor&& other) noexcept : value_(other.release()) {}
  /// Swaps the two descriptors.
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (value_ >= 0) ::close(value_);
  }

  /// Opens a path, close-on-exec. Throws std::system_error.
  static FileDescriptor open(const std::filesystem::path& path, int flags, mode_t mode = 0);
  /// Opens the entry `name` of the open folder `parent`, or the path `name` for AT_FDCWD,
  /// close-on-exec. Throws std::system_error.
  static FileDescriptor openAt(int parent, const char* name, int flags, const std::string& shown,
                               mode_t mode = 0);
  /// The same, but returns an empty object on failure, with errno set.
  static FileDescriptor tryOpenAt(int parent, const char* name, int flags, mode_t mode = 0);
  /// Opens `path`, which is relative and has no "..", below the open folder `parent`. Holds none on
  /// failure, with errno: ELOOP or ENOTDIR for a symbolic link anywhere on the way.
  static FileDescriptor tryOpenBelow(int parent, const std::string& path, int flags,
                                     mode_t mode = 0);

  /// Whether it owns a descriptor.
  explicit operator bool() const { return value_ >= 0; }
  /// The descriptor, which stays owned; -1 for none.
  int get() const { return value_; }
  /// Gives up ownership and returns the descriptor.
  int release() { return std::exchange(value_, -1); }

  /// The result of fstat(). Throws std::system_error.
  struct stat status(const std::string& shown) const;
  /// Sets the permissions, regardless of the process's umask. Throws std::system_error.
  void setMode(mode_t mode, const std::string& shown) const;
  /// Reads from the current position. Returns the number of bytes, 0 at the end of the file. Throws
  /// std::system_error.
  std::size_t read(std::span<char> bytes, const std::string& shown) const;
  /// Reads from `offset` until `bytes` is full or the file ends. Returns the number of bytes.
  /// Throws std::system_error.
  std::size_t readAt(std::uint64_t offset, std::span<char> bytes, const std::string& shown) const;
  /// Writes all of `bytes` at the current position. Throws std::system_error.
  void write(std::string_view bytes, const std::string& shown) const;
  /// Writes all of `bytes` from `offset` on. Throws std::system_error.
  void writeAt(std::uint64_t offset, std::string_view bytes, const std::string& shown) const;
  /// Flushes what was written to the disk. Throws std::system_error.
  void sync(const std::string& shown) const;
  /// Closes a file that was written. Throws std::system_error: some file systems report a failed
  /// write only here.
  void close(const std::string& shown);

 private:
  int value_;
};

}  // namespace tavlen
