#pragma once

#include <unistd.h>

#include <utility>

namespace tavlen {

/// Owns an open file descriptor, or holds none (-1).
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

  int get() const { return value_; }
  int release() { return std::exchange(value_, -1); }

 private:
  int value_;
};

}  // namespace tavlen
