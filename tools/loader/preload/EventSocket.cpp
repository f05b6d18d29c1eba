#include "tools/loader/preload/EventSocket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <exception>
#include <string>

#include "tavlen/foundation/files/RetryOnInterrupt.h"
#include "tavlen/foundation/json/JSONEncoder.h"

namespace tavlen::loader {

EventSocket::EventSocket(int socket) {
  // A program that closes descriptors of others may open one of its own with a low number next.
  constexpr int kLowest = 200;
  socket_ = ::fcntl(socket, F_DUPFD_CLOEXEC, kLowest);
  (void)::close(socket);
}

void EventSocket::receive(const LoaderEvent& event) {
  try {
    const std::string text = encodeJSON(event);
    (void)retryOnInterrupt([&] { return ::send(socket_, text.data(), text.size(), MSG_NOSIGNAL); });
  } catch (const std::exception&) {
    // Names of classes may be any bytes, of which JSON has no form.
  }
}

}  // namespace tavlen::loader
