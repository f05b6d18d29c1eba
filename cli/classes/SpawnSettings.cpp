#include "cli/classes/SpawnSettings.h"

#include <algorithm>
#include <string_view>

#include "tavlen/foundation/base/ArgumentVector.h"
#include "tavlen/foundation/base/SystemError.h"

namespace tavlen::cli {

namespace {

void require(int error, const std::string& subject) {
  if (error != 0) throwSystemError(error, subject);
}

/// The name and the "=" of a variable.
std::string_view nameOf(std::string_view variable) {
  return variable.substr(0, variable.find('=') + 1);
}

std::vector<std::string> environmentWith(const std::vector<std::string>& variables) {
  std::vector<std::string> all = variables;
  for (char** each = environmentOfProcess(); *each != nullptr; ++each) {
    const bool isReplaced =
        std::any_of(variables.begin(), variables.end(), [&](const std::string& variable) {
          return std::string_view(*each).starts_with(nameOf(variable));
        });
    if (!isReplaced) all.emplace_back(*each);
  }
  return all;
}

}  // namespace

SpawnSettings::SpawnSettings() {
  require(::posix_spawn_file_actions_init(&actions_), "posix_spawn");
  if (const int error = ::posix_spawnattr_init(&attributes_)) {
    ::posix_spawn_file_actions_destroy(&actions_);
    throwSystemError(error, "posix_spawn");
  }
}

SpawnSettings::~SpawnSettings() {
  ::posix_spawn_file_actions_destroy(&actions_);
  ::posix_spawnattr_destroy(&attributes_);
}

void SpawnSettings::redirect(int from, int to) {
  require(::posix_spawn_file_actions_adddup2(&actions_, from, to), "posix_spawn");
}

void SpawnSettings::makeOwnGroup() {
  require(::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP), "posix_spawn");
  require(::posix_spawnattr_setpgroup(&attributes_, 0), "posix_spawn");
}

pid_t SpawnSettings::start(const std::filesystem::path& program,
                           const std::vector<std::string>& arguments,
                           const std::vector<std::string>& variables) {
  const ArgumentVector vector(arguments);
  const ArgumentVector environment(environmentWith(variables));
  pid_t child = 0;
  require(::posix_spawn(&child, program.c_str(), &actions_, &attributes_, vector.data(),
                        environment.data()),
          program.string());
  return child;
}

}  // namespace tavlen::cli
