#include "cli/terminal/EndSignals.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>

#include "tavlen/foundation/files/Connection.h"

namespace tavlen::cli {

namespace {

constexpr std::array<int, 4> kSignals = {SIGHUP, SIGINT, SIGTERM, SIGPIPE};

/// The write end of the pipe; -1 once it is closed. Two signals may be handled on two threads.
std::atomic<int> openEnd = -1;
static_assert(std::atomic<int>::is_always_lock_free, "a handler may not use a lock");

void closeEnd() {
  if (const int end = openEnd.exchange(-1); end >= 0) ::close(end);
}

extern "C" void endAtSignal(int /*signal*/) {
  const int error = errno;
  closeEnd();
  errno = error;
}

struct sigaction handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  struct sigaction former {};
  action.sa_handler = handler;
  ::sigaction(signal, nullptr, &former);
  // An ignored signal, as under nohup, stays ignored.
  if (former.sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
  return former;
}

}  // namespace

EndSignals::EndSignals() {
  Connection pipe = Connection::pipe();
  descriptor_ = pipe.first.release();
  openEnd = pipe.second.release();
  std::transform(kSignals.begin(), kSignals.end(), former_.begin(), [](int signal) {
    return handle(signal, signal == SIGPIPE ? SIG_IGN : endAtSignal);
  });
}

EndSignals::~EndSignals() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    ::sigaction(kSignals[i], &former_[i], nullptr);
  }
  closeEnd();
  ::close(descriptor_);
}

}  // namespace tavlen::cli
