#include "dumpagent/ReportSender.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <string>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/Connection.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen::dumpagent {

ReportSender::ReportSender(std::uint16_t port) : socket_(makeDatagramSocket()) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  // Connected, so that the kernel reports a closed port (ECONNREFUSED).
  if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    throwSystemError("connect");
  }
}

void ReportSender::send(const TessaloopDatagram& report) const {
  const std::string bytes = report.written();
  // ECONNREFUSED here refers to the previous report and means that this one was not sent.
  for (int attempt = 0; attempt < 2; ++attempt) {
    const ssize_t sent =
        retryOnInterrupt([&] { return ::send(socket_.get(), bytes.data(), bytes.size(), 0); });
    if (sent >= 0 || errno != ECONNREFUSED) return;
  }
}

bool ReportSender::wasTaken() const {
  int error = 0;
  socklen_t size = sizeof(error);
  return ::getsockopt(socket_.get(), SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

}  // namespace tavlen::dumpagent
