#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// Sends one datagram to a port of this machine. Whether it was sent.
inline bool sendDatagram(std::uint16_t port, std::string_view bytes) {
  const FileDescriptor sender(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  return ::sendto(sender.get(), bytes.data(), bytes.size(), 0,
                  reinterpret_cast<const sockaddr*>(&address),
                  sizeof(address)) == static_cast<ssize_t>(bytes.size());
}

}  // namespace tavlen
