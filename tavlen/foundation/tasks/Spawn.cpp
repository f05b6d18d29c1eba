#include "tavlen/foundation/tasks/Spawn.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#ifdef __APPLE__
#include <fcntl.h>
#endif

#include "tavlen/foundation/base/ArgumentVector.h"
#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen {

namespace {

#ifdef __APPLE__

/// The child gets what file actions name, and nothing else: posix_spawnattr_setflags(3).
constexpr short kFlags = POSIX_SPAWN_CLOEXEC_DEFAULT;

int keepUntil(posix_spawn_file_actions_t& actions, int /*last*/) {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) < 0) continue;  // a closed one cannot be passed on
    if (const int error = ::posix_spawn_file_actions_addinherit_np(&actions, stream)) return error;
  }
  return 0;
}

#else

constexpr short kFlags = 0;

int keepUntil(posix_spawn_file_actions_t& actions, int last) {
  return ::posix_spawn_file_actions_addclosefrom_np(&actions, last + 1);
}

#endif

void require(int error) {
  if (error != 0) throwSystemError(error, "posix_spawn");
}

/// The variables, each "NAME=VALUE", and those of this process that have other names.
std::vector<std::string> environmentWith(const std::vector<std::string>& variables) {
  std::vector<std::string> all = variables;
  for (char** each = environmentOfProcess(); *each != nullptr; ++each) {
    const std::string_view own = *each;
    const bool isReplaced =
        std::any_of(variables.begin(), variables.end(), [own](const auto& variable) {
          return own.starts_with(variable.substr(0, variable.find('=') + 1));
        });
    if (!isReplaced) all.emplace_back(own);
  }
  return all;
}

}  // namespace

Spawn::Spawn() : flags_(kFlags) {
  require(::posix_spawn_file_actions_init(&actions_));
  if (const int error = ::posix_spawnattr_init(&attributes_)) {
    ::posix_spawn_file_actions_destroy(&actions_);
    throwSystemError(error, "posix_spawn");
  }
}

Spawn::~Spawn() {
  ::posix_spawn_file_actions_destroy(&actions_);
  ::posix_spawnattr_destroy(&attributes_);
}

void Spawn::redirect(int from, int to) {
  require(::posix_spawn_file_actions_adddup2(&actions_, from, to));
  last_ = std::max(last_, to);
}

void Spawn::inheritDescriptors() {
  inheritsDescriptors_ = true;
  flags_ = static_cast<short>(flags_ & ~kFlags);
}

void Spawn::setVariable(const std::string& name, const std::string& value) {
  variables_.push_back(name + '=' + value);
}

void Spawn::makeOwnGroup() {
  flags_ |= POSIX_SPAWN_SETPGROUP;
  require(::posix_spawnattr_setpgroup(&attributes_, 0));
}

int Spawn::start(const char* program, const std::vector<std::string>& arguments,
                 ProgramLookup lookup, pid_t& child) {
  // Actions take place in the order of their addition, so the redirected descriptors still exist.
  if (!inheritsDescriptors_) {
    if (const int error = keepUntil(actions_, last_)) return error;
  }
  if (const int error = ::posix_spawnattr_setflags(&attributes_, flags_)) return error;
  const ArgumentVector vector(arguments);
  const ArgumentVector environment(environmentWith(variables_));
  const auto call = lookup == ProgramLookup::exact ? &posix_spawn : &posix_spawnp;
  return call(&child, program, &actions_, &attributes_, vector.data(), environment.data());
}

pid_t waitForChild(pid_t child, int& status) {
  return retryOnInterrupt([&] { return ::waitpid(child, &status, 0); });
}

}  // namespace tavlen
