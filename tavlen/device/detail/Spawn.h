#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// Starting of children and waiting for them, for the device's programs. Users of the library have
/// Process. Threads: any.
namespace tavlen::detail {

/// How the program is found.
enum class ProgramLookup {
  exact,
  alongPath,  ///< along PATH, for a name without a slash
};

/// Starts `path` with `arguments`, the whole vector, and the caller's environment, without file
/// actions and attributes. Returns the error number of posix_spawn(). For 0, `child` is set and
/// must be waited for.
int spawn(const char* path, const std::vector<std::string>& arguments, ProgramLookup lookup,
          pid_t& child);

/// waitpid() without options, retried when a signal interrupts it.
pid_t waitForChild(pid_t child, int& status);

}  // namespace tavlen::detail
