#pragma once

#include <cstdint>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/introspection/remote/TessaloopDatagram.h"

namespace tavlen::dumpagent {

/// Sends the agent's reports to a UDP port of this machine. Threads: any.
class ReportSender {
 public:
  /// Throws std::system_error.
  explicit ReportSender(std::uint16_t port);

  /// Sends a report; one that nobody takes is lost.
  void send(const TessaloopDatagram& report) const;
  /// Whether somebody listened to what was sent last. The system tells at once, since it is this
  /// machine.
  bool wasTaken() const;

 private:
  FileDescriptor socket_;
};

}  // namespace tavlen::dumpagent
