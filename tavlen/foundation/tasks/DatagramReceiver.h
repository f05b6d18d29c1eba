#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <thread>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/files/FileDescriptor.h"

namespace tavlen {

/// Receives the datagrams that come to a UDP port of this machine, over IPv4 and at any of its
/// addresses, until another thread closes it.
///
/// Threads: any; one is in receive() at a time. No lock is held while a handler runs.
class DatagramReceiver {
 public:
  /// Returns whether to go on.
  using Handler = FunctionRef<bool(std::string_view datagram)>;

  /// Binds the port, which nobody else must have; 0 takes a free one. Throws std::system_error. The
  /// descriptors are close-on-exec.
  explicit DatagramReceiver(std::uint16_t port);
  DatagramReceiver(const DatagramReceiver&) = delete;
  DatagramReceiver& operator=(const DatagramReceiver&) = delete;
  ~DatagramReceiver() = default;

  std::uint16_t port() const { return port_; }
  bool isClosed();

  /// Gives each datagram, of which it keeps the first `mostBytes`, to `handler`, in the order in
  /// which they came. Returns when the handler says so, when the receiver is closed, and when the
  /// system reports an error. What the handler throws leaves the call.
  void receive(std::size_t mostBytes, Handler handler);

  /// Ends receive(), and lets no further call begin. Waits until it has ended; then the port is
  /// free. Called by the handler it does not wait: the port is free when receive() returns.
  void close();

 private:
  class Inside;

  bool waitForDatagram() const;

  std::mutex lock_;
  std::condition_variable ended_;
  FileDescriptor socket_;
  FileDescriptor wake_;        ///< readable when the receiver is closed
  FileDescriptor wakeSender_;  ///< the other end
  std::uint16_t port_ = 0;
  bool isClosed_ = false;
  std::thread::id receiving_;  ///< the thread that is in receive()
};

}  // namespace tavlen
