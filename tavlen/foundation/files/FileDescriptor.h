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

namespace tavlen {

/// Flags of the usual ways to open. A folder itself, not one that a link leads to:
inline constexpr int kOpenFolder = O_RDONLY | O_DIRECTORY | O_NOFOLLOW;
/// For reading, through links, without waiting for the other end of a pipe:
inline constexpr int kOpenToRead = O_RDONLY | O_NONBLOCK | O_NOCTTY;
/// A new file for writing, in the place of nothing, not even of a link:
inline constexpr int kOpenNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
/// A folder as the start of other calls; where the system can, without the right to list it.
#ifdef O_PATH
inline constexpr int kOpenToPass = O_PATH | O_DIRECTORY | O_NOFOLLOW;
#else
inline constexpr int kOpenToPass = kOpenFolder;
#endif

/// Owns an open file descriptor, or holds none (-1).
///
/// Calls that a signal interrupts are made again. `shown` is the path as errors name it:
/// std::system_error. Threads: as the system's calls.
class FileDescriptor {
 public:
  explicit FileDescriptor(int value = -1) : value_(value) {}
  FileDescriptor(FileDescriptor&& other) noexcept : value_(other.release()) {}
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
  /// The same, but holds none on failure, with errno.
  static FileDescriptor tryOpenAt(int parent, const char* name, int flags, mode_t mode = 0);
  /// Opens `path`, which is relative and has no "..", below the open folder `parent`. Holds none on
  /// failure, with errno: ELOOP or ENOTDIR for a symbolic link anywhere on the way.
  static FileDescriptor tryOpenBelow(int parent, std::string_view path, int flags, mode_t mode = 0);

  explicit operator bool() const { return value_ >= 0; }
  int get() const { return value_; }
  int release() { return std::exchange(value_, -1); }

  struct stat status(const std::string& shown) const;
  /// Sets the permissions, without regard to the process's mask.
  void setMode(mode_t mode, const std::string& shown) const;
  /// Reads on from where the last call ended; gives how many bytes there were, 0 at the file's end.
  std::size_t read(std::span<char> bytes, const std::string& shown) const;
  /// Reads from `offset` on until `bytes` is full or the file ends; gives how many bytes there
  /// were.
  std::size_t readAt(std::uint64_t offset, std::span<char> bytes, const std::string& shown) const;
  /// Writes all of `bytes`, after those of the last call.
  void write(std::string_view bytes, const std::string& shown) const;
  /// Writes all of `bytes` from `offset` on.
  void writeAt(std::uint64_t offset, std::string_view bytes, const std::string& shown) const;
  /// Brings what was written to the disk.
  void sync(const std::string& shown) const;
  /// Closes a file that was written: some file systems report a failed write only here.
  void close(const std::string& shown);

 private:
  int value_;
};

}  // namespace tavlen
