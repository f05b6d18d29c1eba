#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen::fuzz {

/// A file in memory, for what reads files.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size)
      : file_(::memfd_create("input", MFD_CLOEXEC)) {
    if (::write(file_.get(), data, size) != static_cast<ssize_t>(size)) std::abort();
  }

  /// The path by which this process can open it.
  std::string path() const { return "/proc/self/fd/" + std::to_string(file_.get()); }

 private:
  FileDescriptor file_;
};

}  // namespace tavlen::fuzz
