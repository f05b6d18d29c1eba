#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

/// Runs a child program to its end. It inherits the caller's environment and none of the library's
/// descriptors.
///
/// The program that uses the library must let children be waited for: SIGCHLD must not be ignored,
/// nor have SA_NOCLDWAIT, and no other code may wait for any child (as by wait()). Otherwise
/// waitUntilExit() throws Error::waitpid with ECHILD, although the child may have succeeded. The
/// child inherits which signals are ignored and blocked; a program that ignores SIGPIPE should
/// restore it before launching one that writes to a pipe.
///
/// Threads: one object one thread at a time; objects share nothing.
class TAVLEN_API Process {
 public:
  /// The ways in which a run fails.
  enum class ErrorCase {
    posixSpawn,   ///< the launch failed; the number is the error of posix_spawn()
    waitpid,      ///< waiting failed; the number is errno
    signalled,    ///< killed by the signal with that number
    terminated,   ///< ended with that exit status, or stopped by that signal
    notLaunched,  ///< wait without a launch; no number
  };
  class Error;

  /// Prepares a run. A `path` without a slash is searched for in PATH. `arguments` is the whole
  /// argument vector, beginning with the program's name.
  Process(std::string path, std::vector<std::string> arguments);

  /// The path as given.
  const std::string& path() const { return path_; }
  /// The arguments as given.
  const std::vector<std::string>& arguments() const { return arguments_; }
  /// The child's identifier; nothing before a successful launch.
  std::optional<pid_t> pid() const { return pid_; }

  /// Starts the child. Throws Error::posixSpawn, with EINVAL for a NUL in the path or an argument,
  /// where the child would see only the text before it. Call waitUntilExit() after each launch.
  void launch();
  /// Blocks until the child has ended, and cannot be cancelled. Throws Error unless it exited with
  /// status 0.
  void waitUntilExit();

 private:
  std::string path_;
  std::vector<std::string> arguments_;
  std::optional<pid_t> pid_;
};

/// The failure of a run. It has no localized text; its description is the case with its number:
/// "terminated(3)".
class TAVLEN_API Process::Error : public CasedError<Process::ErrorCase> {
 public:
  /// `error` is an errno value.
  static Error posixSpawn(std::int32_t error);
  /// `error` is an errno value.
  static Error waitpid(std::int32_t error);
  /// `signal` is the signal's number.
  static Error signalled(std::int32_t signal);
  /// `code` is the exit status or the stop signal.
  static Error terminated(std::int32_t code);
  /// No child was launched.
  static Error notLaunched();

  /// The number of the case; 0 for notLaunched.
  std::int32_t number() const { return number_; }
  /// The case with its number.
  std::string description() const override;

  /// The error for a status of waitpid(); nothing for success. A stopped child counts as
  /// terminated, with the stop signal as its code.
  static std::optional<Error> ofStatus(int status);

 private:
  explicit Error(Case which, std::int32_t number = 0)
      : CasedError(which, {}, {std::to_string(number)}), number_(number) {}

  std::int32_t number_;
};

}  // namespace tavlen
