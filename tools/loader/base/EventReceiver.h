#pragma once

#include "tavlen/tweaks/LoaderEvent.h"

namespace tavlen::loader {

/// Receives events. Threads: any, also concurrently. Must not throw, and must send no Objective-C
/// message.
class EventReceiver {
 public:
  EventReceiver() = default;
  EventReceiver(const EventReceiver&) = delete;
  EventReceiver& operator=(const EventReceiver&) = delete;
  virtual ~EventReceiver() = default;

  virtual void receive(const LoaderEvent& event) = 0;
};

}  // namespace tavlen::loader
