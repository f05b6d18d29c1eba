#pragma once

#include <cstdint>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/introspection/remote/TessaloopDatagram.h"

namespace tavlen::dumpagent {

/// Sends the agent's reports to a UDP port of this machine. Threads: any.
class ReportSender {
 public:
  /// Opens a socket for reports to `port`. Throws std::system_error.
  explicit ReportSender(std::uint16_t port);

  /// Sends a report. It is lost if no socket is bound to the port.
  void send(const TessaloopDatagram& report) const;
  /// Whether a socket was bound to the port when the last report was sent. The answer is immediate
  /// because the port is on this machine.
  bool wasTaken() const;

 private:
  FileDescriptor socket_;
};

}  // namespace tavlen::dumpagent
