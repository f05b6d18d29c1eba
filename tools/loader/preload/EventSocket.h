#pragma once

#include "tools/loader/base/EventReceiver.h"

namespace tavlen::loader {

/// Sends each event as one packet of JSON. An event that cannot be sent is dropped.
class EventSocket : public EventReceiver {
 public:
  /// Keeps `socket` open, but not in programs that this one starts.
  explicit EventSocket(int socket);

  void receive(const LoaderEvent& event) override;

 private:
  int socket_;
};

}  // namespace tavlen::loader
