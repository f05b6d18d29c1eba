#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tavlen/foundation/errors/CasedError.h"

namespace tavlen {

/// A child program that is run to its end. It inherits the caller's environment and none of the
/// library's descriptors.
///
/// Threads: one object one thread at a time; objects share nothing.
class Process {
 public:
  enum class ErrorCase {
    posixSpawn,   ///< the launch failed; the number is the call's error
    waitpid,      ///< waiting failed; the number is errno
    signalled,    ///< ended by the signal of that number
    terminated,   ///< ended with that exit status, or was stopped by that signal
    notLaunched,  ///< there was nothing to wait for; no number
  };
  class Error;

  /// `path` is looked up along PATH when it has no slash. `arguments` is the whole vector, the
  /// program's own name at its beginning included.
  Process(std::string path, std::vector<std::string> arguments);

  const std::string& path() const { return path_; }
  const std::vector<std::string>& arguments() const { return arguments_; }
  /// The child's identifier; nothing before a launch that succeeded.
  std::optional<pid_t> pid() const { return pid_; }

  /// Throws Error::posixSpawn, with EINVAL for a NUL in the path or an argument, of which the child
  /// would see only the beginning. Every launch is to be followed by a wait.
  void launch();
  /// Blocks until the child has ended. Returns for exit status 0 only; throws Error otherwise.
  void waitUntilExit();

 private:
  std::string path_;
  std::vector<std::string> arguments_;
  std::optional<pid_t> pid_;
};

/// How a run failed. It has neither key nor text: its description is the case with its number,
/// "terminated(3)".
class Process::Error : public CasedError<Process::ErrorCase> {
 public:
  static Error posixSpawn(std::int32_t error);
  static Error waitpid(std::int32_t error);
  static Error signalled(std::int32_t signal);
  static Error terminated(std::int32_t code);
  static Error notLaunched();

  std::int32_t number() const { return number_; }
  std::string description() const override;

  /// What a status of waitpid says: nothing for success. A stopped child counts as ended, with the
  /// stop signal as its code.
  static std::optional<Error> ofStatus(int status);

 private:
  explicit Error(Case which, std::int32_t number = 0)
      : CasedError(which, {}, {std::to_string(number)}), number_(number) {}

  std::int32_t number_;
};

}  // namespace tavlen
