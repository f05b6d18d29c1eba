#include "tavlen/device/detail/Spawn.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tavlen/foundation/files/RetryOnInterrupt.h"

#if defined(__APPLE__)
#include <crt_externs.h>
#endif

namespace tavlen::detail {

namespace {

/// A copy of the arguments in the form of the system call.
class ArgumentVector {
 public:
  explicit ArgumentVector(const std::vector<std::string>& arguments) : texts_(arguments) {
    pointers_.reserve(texts_.size() + 1);
    for (std::string& text : texts_) pointers_.push_back(text.data());
    pointers_.push_back(nullptr);
  }

  char* const* data() const { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

char** environmentOfProcess() {
#if defined(__APPLE__)
  return *_NSGetEnviron();  // only the main program has `environ` itself
#else
  return environ;
#endif
}

}  // namespace

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
