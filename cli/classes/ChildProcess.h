#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tavlen::cli {

/// A child process and those that it starts in turn (RAII): the destructor ends them.
///
/// The child has a process group of its own, so that a terminal's signals reach only the command.
/// Threads: one at a time.
class ChildProcess {
 public:
  /// Starts `program` with `arguments`, the whole vector, and the caller's environment. `input`
  /// becomes its standard input, `output` its standard output and standard error stream; it
  /// inherits none of the library's descriptors. Throws std::system_error.
  ChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments,
               int input, int output);
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  /// As end().
  ~ChildProcess();

  /// Whether the child has ended. Its children may still run.
  bool hasEnded() const;
  /// Ends the process group: by SIGTERM, and after half a second by SIGKILL. Waits for the child
  /// and returns its status in the form of waitpid(); call once.
  int end();

 private:
  pid_t pid_ = 0;  ///< 0 once it was waited for
};

/// The way in which a child ended, by its status of waitpid(): "exit status 0", "signal SIGBUS".
std::string endText(int status);

}  // namespace tavlen::cli
