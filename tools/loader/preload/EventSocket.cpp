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
}

void EventSocket::receive(const LoaderEvent& event) {
  if (send(event) || errno != EMSGSIZE) return;  // any other failure is of all events to come
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
