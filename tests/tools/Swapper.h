#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>

namespace tavlen {

/// A process that swaps two entries as fast as it can, until it is destroyed.
class Swapper {
 public:
  Swapper(const std::filesystem::path& a, const std::filesystem::path& b) : child_(::fork()) {
    while (child_ == 0) ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE);
  }
  ~Swapper() {
    ::kill(child_, SIGKILL);
    ::waitpid(child_, nullptr, 0);
  }
  Swapper(const Swapper&) = delete;
  Swapper& operator=(const Swapper&) = delete;

 private:
  pid_t child_;
};

}  // namespace tavlen
