#include "tools/loader/preload/EventSocket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <string>

#include "tavlen/foundation/files/RetryOnInterrupt.h"
#include "tavlen/foundation/json/JSONEncoder.h"

namespace tavlen::loader {

EventSocket::EventSocket(int socket) : socket_(socket) {
  (void)::fcntl(socket_, F_SETFD, FD_CLOEXEC);
  (void)::fstat(socket_, &status_);
}

bool EventSocket::isOwn() const {
  struct stat now {};
  return ::fstat(socket_, &now) == 0 && now.st_dev == status_.st_dev &&
         now.st_ino == status_.st_ino;
}

void EventSocket::receive(const LoaderEvent& event) {
  if (!isOwn() || send(event) || errno != EMSGSIZE)
    return;  // any other failure is of all events to come
  LoaderEvent rest = event;
  rest.arguments.reset();
  rest.result.reset();
  (void)send(rest);
}

bool EventSocket::send(const LoaderEvent& event) const {
  try {
    const std::string text = encodeJSON(event);
    return retryOnInterrupt(
               [&] { return ::send(socket_, text.data(), text.size(), MSG_NOSIGNAL); }) >= 0;
  } catch (const std::exception&) {
    return true;  // there is no memory for the event
  }
}

}  // namespace tavlen::loader
