#include "kvfileops/OwnState.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>

#include "kvfileops/CallerRights.h"
#include "tavlen/foundation/base/ArgumentVector.h"

namespace tavlen::fileops {

namespace {

/// A job opens some descriptors for each folder in which it is; this is more than the deepest
/// needs.
constexpr rlim_t kDescriptors = 1024;

void setSignal(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  (void)::sigaction(signal, &action, nullptr);
}

void openStandardStreams() {
  // The lowest free number is the one that is opened.
  int opened = ::open("/dev/null", O_RDWR);
  while (opened >= 0 && opened <= STDERR_FILENO) opened = ::open("/dev/null", O_RDWR);
  if (opened >= 0) ::close(opened);
}

/// Raises a limit to `wanted` where the process may, otherwise as far as it may.
void raiseLimit(int resource, rlim_t wanted) {
  rlimit limit{};
  if (::getrlimit(resource, &limit) != 0) return;
  const rlimit lifted{std::max(limit.rlim_cur, wanted), std::max(limit.rlim_max, wanted)};
  const rlimit highest{std::max(limit.rlim_cur, std::min(limit.rlim_max, wanted)), limit.rlim_max};
  if (::setrlimit(resource, &lifted) != 0) (void)::setrlimit(resource, &highest);
}

}  // namespace

void takeOwnState() {
  ::umask(S_IWGRP | S_IWOTH);
  setSignal(SIGXFSZ, SIG_IGN);
  setSignal(SIGPIPE, SIG_IGN);
  setSignal(SIGCHLD, SIG_DFL);
  ::alarm(0);  // a new program inherits the one that was set
  openStandardStreams();
  if (!hasLentRights()) return;
  static std::array<char*, 1> noVariables = {nullptr};
  setEnvironmentOfProcess(noVariables.data());
  raiseLimit(RLIMIT_NOFILE, kDescriptors);
  for (const int resource : {RLIMIT_FSIZE, RLIMIT_CPU, RLIMIT_AS, RLIMIT_DATA, RLIMIT_STACK}) {
    raiseLimit(resource, RLIM_INFINITY);
  }
}

}  // namespace tavlen::fileops
