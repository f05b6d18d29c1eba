#pragma once

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

  int socket_;
};

}  // namespace tavlen::loader
