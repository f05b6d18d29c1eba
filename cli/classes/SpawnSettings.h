#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tavlen::cli {

/// What posix_spawn() does in a child before its program starts (RAII). All functions throw
/// std::system_error.
class SpawnSettings {
 public:
  SpawnSettings();
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings();

  /// Makes the descriptor `to` of the child what `from` is here. With equal ones, the child
  /// inherits it.
  void redirect(int from, int to);
  /// Gives the child a process group of its own.
  void makeOwnGroup();
  /// Starts `program` with `arguments`, the whole vector, and the variables of this process.
  /// `variables`, each "NAME=VALUE", replace those of equal names. Returns the child's number.
  pid_t start(const std::filesystem::path& program, const std::vector<std::string>& arguments,
              const std::vector<std::string>& variables);

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

}  // namespace tavlen::cli
