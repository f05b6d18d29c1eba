#include "cli/EndSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

namespace tavlen::cli {

namespace {

constexpr std::array<int, 2> kEndSignals = {SIGINT, SIGTERM};

/// The pipe's side that is closed; -1 once it is. For the handler, hence no other type.
volatile std::sig_atomic_t openEnd = -1;

void closeEnd() {
  const int end = openEnd;
  openEnd = -1;
  if (end >= 0) ::close(end);
}

extern "C" void endAtSignal(int /*signal*/) {
  const int error = errno;
  closeEnd();
  errno = error;
}

void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

EndSignals::EndSignals() {
  std::array<int, 2> pipe{};
  if (::pipe(pipe.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  for (const int end : pipe) ::fcntl(end, F_SETFD, FD_CLOEXEC);
  descriptor_ = pipe[0];
  openEnd = pipe[1];
  for (const int signal : kEndSignals) handle(signal, endAtSignal);
  handle(SIGPIPE, SIG_IGN);
}

EndSignals::~EndSignals() {
  for (const int signal : kEndSignals) handle(signal, SIG_DFL);
  handle(SIGPIPE, SIG_DFL);
  closeEnd();
  ::close(descriptor_);
}

}  // namespace tavlen::cli
