#include "cli/classes/ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <thread>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"
#include "tavlen/foundation/tasks/Spawn.h"

namespace tavlen::cli {

namespace {

/// The signals that end a process by themselves or that programs end one with.
constexpr auto kSignals = std::to_array<std::pair<int, const char*>>({
    {SIGHUP, "SIGHUP"},
    {SIGINT, "SIGINT"},
    {SIGQUIT, "SIGQUIT"},
    {SIGILL, "SIGILL"},
    {SIGTRAP, "SIGTRAP"},
    {SIGABRT, "SIGABRT"},
    {SIGBUS, "SIGBUS"},
    {SIGFPE, "SIGFPE"},
    {SIGKILL, "SIGKILL"},
    {SIGSEGV, "SIGSEGV"},
    {SIGSYS, "SIGSYS"},
    {SIGPIPE, "SIGPIPE"},
    {SIGALRM, "SIGALRM"},
    {SIGTERM, "SIGTERM"},
    {SIGXCPU, "SIGXCPU"},
    {SIGXFSZ, "SIGXFSZ"},
});

}  // namespace

ChildProcess::ChildProcess(const std::filesystem::path& program,
                           const std::vector<std::string>& arguments, int input, int output) {
  Spawn spawn;
  spawn.redirect(input, STDIN_FILENO);
  spawn.redirect(output, STDOUT_FILENO);
  spawn.redirect(output, STDERR_FILENO);
  spawn.makeOwnGroup();
  const int error = spawn.start(program.c_str(), arguments, ProgramLookup::exact, pid_);
  if (error != 0) throwSystemError(error, program.string());
}

ChildProcess::~ChildProcess() {
  if (pid_ > 0) (void)end();
}

bool ChildProcess::hasEnded() const {
  siginfo_t info{};
  const int result = retryOnInterrupt(
      [&] { return ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT); });
  // An error means that there is no such child, so there is nothing to wait for.
  return result != 0 || info.si_pid == pid_;
}

int ChildProcess::end() {
  constexpr std::chrono::milliseconds kGrace(500);
  constexpr std::chrono::milliseconds kInterval(1);
  // Until the child is waited for, the number of its group cannot become another's.
  if (!hasEnded()) ::kill(-pid_, SIGTERM);
  const auto deadline = std::chrono::steady_clock::now() + kGrace;
  while (!hasEnded() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(kInterval);
  }
  ::kill(-pid_, SIGKILL);
  int status = 0;
  (void)waitForChild(pid_, status);
  pid_ = 0;
  return status;
}

std::string endText(int status) {
  if (!WIFSIGNALED(status)) return "exit status " + std::to_string(WEXITSTATUS(status));
  const int number = WTERMSIG(status);
  const auto* const found = std::find_if(std::begin(kSignals), std::end(kSignals),
                                         [&](const auto& entry) { return entry.first == number; });
  return "signal " + (found == std::end(kSignals) ? std::to_string(number) : found->second);
}

}  // namespace tavlen::cli
