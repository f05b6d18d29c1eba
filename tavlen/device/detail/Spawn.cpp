#include "tavlen/device/detail/Spawn.h"

#include <spawn.h>
#include <sys/wait.h>

#include "tavlen/foundation/base/ArgumentVector.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen::detail {

int spawn(const char* path, const std::vector<std::string>& arguments, ProgramLookup lookup,
          pid_t& child) {
  const ArgumentVector vector(arguments);
  const auto call = lookup == ProgramLookup::exact ? &posix_spawn : &posix_spawnp;
  return call(&child, path, nullptr, nullptr, vector.data(), environmentOfProcess());
}

pid_t waitForChild(pid_t child, int& status) {
  return retryOnInterrupt([&] { return ::waitpid(child, &status, 0); });
}

}  // namespace tavlen::detail
