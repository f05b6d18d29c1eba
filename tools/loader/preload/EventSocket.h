#pragma once

#include <sys/stat.h>

#include "tools/loader/base/EventReceiver.h"

namespace tavlen::loader {

/// Sends each event as one packet of JSON. One that is too large goes without arguments and result;
/// any other that cannot be sent is dropped.
class EventSocket : public EventReceiver {
 public:
  /// Keeps `socket` open, but not in programs that this one starts.
  explicit EventSocket(int socket);

  void receive(const LoaderEvent& event) override;

 private:
  /// Returns false with errno if it cannot be sent.
  bool send(const LoaderEvent& event) const;

  /// Whether the descriptor is still the socket: a program that closes all descriptors may open
  /// another one with its number.
  bool isOwn() const;

  int socket_;
  struct stat status_ {};  ///< the socket's
};

}  // namespace tavlen::loader
