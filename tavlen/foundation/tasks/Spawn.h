#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// How the program is found.
enum class ProgramLookup {
  exact,
  alongPath,  ///< along PATH, for a name without a slash
};

/// Starts a child that inherits the three standard streams and what it is given, but no other
/// descriptor, even one that was opened without close-on-exec, by a library or between two calls of
/// another thread. It inherits those as programs do only after inheritDescriptors().
///
/// Users of the library have Process. Threads: any, one object one thread at a time.
class TAVLEN_API Spawn {
 public:
  /// The child gets the caller's standard streams. Throws std::system_error.
  Spawn();
  Spawn(const Spawn&) = delete;
  Spawn& operator=(const Spawn&) = delete;
  ~Spawn();

  /// The child's descriptor `to` is `from`: a standard stream, the first one after these, which the
  /// child then has as well, or any after inheritDescriptors(). Throws std::system_error.
  void redirect(int from, int to);
  /// The child gets each descriptor of the caller that is not close-on-exec.
  void inheritDescriptors();
  /// A variable of the child's environment, instead of the caller's of this name.
  void setVariable(const std::string& name, const std::string& value);
  /// The child gets a process group of its own. Throws std::system_error.
  void makeOwnGroup();

  /// Starts `program` with `arguments`, the whole vector, and the caller's environment but for the
  /// variables that were set. Returns the error number of posix_spawn(). For 0, `child` is set and
  /// must be waited for. Call once.
  int start(const char* program, const std::vector<std::string>& arguments, ProgramLookup lookup,
            pid_t& child);

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
  short flags_ = 0;
  bool inheritsDescriptors_ = false;
  int last_ = 2;  ///< the largest descriptor that the child inherits
  std::vector<std::string> variables_;
};

/// waitpid() without options, retried when a signal interrupts it. Threads: any.
TAVLEN_API pid_t waitForChild(pid_t child, int& status);

}  // namespace tavlen
