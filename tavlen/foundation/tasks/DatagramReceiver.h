#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <thread>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/files/Connection.h"

namespace tavlen {

/// Receives datagrams on a UDP port of this machine, over IPv4 and on all addresses, until another
/// thread closes it.
///
/// Threads: any; one at a time may be in receive(). No lock is held while a handler runs.
class TAVLEN_API DatagramReceiver {
 public:
  /// Handles one datagram, valid during the call. Returns whether to continue receiving.
  using Handler = FunctionRef<bool(std::string_view datagram)>;

  /// Binds the port, which no other socket may use; 0 selects a free port. The descriptors are
  /// close-on-exec. Throws std::system_error.
  explicit DatagramReceiver(std::uint16_t port);
  DatagramReceiver(const DatagramReceiver&) = delete;
  DatagramReceiver& operator=(const DatagramReceiver&) = delete;
  ~DatagramReceiver() = default;

  /// The bound port.
  std::uint16_t port() const { return port_; }
  /// Whether close() was called.
  bool isClosed();

  /// Passes each datagram, truncated to `mostBytes`, to `handler` in the order of arrival. Returns
  /// when the handler returns false, when the receiver is closed, and when the system reports an
  /// error. Exceptions of the handler propagate.
  void receive(std::size_t mostBytes, Handler handler);

  /// Ends receive() and prevents further calls of it. Waits until it has returned; then the port is
  /// free. When the handler calls it, it does not wait: the port is free once receive() returns.
  void close();

 private:
  class ReceiveScope;

  bool waitForDatagram() const;

  std::mutex lock_;
  std::condition_variable ended_;
  FileDescriptor socket_;
  Connection wake_;  ///< readable when the receiver is closed
  std::uint16_t port_ = 0;
  bool isClosed_ = false;
  std::thread::id receiving_;  ///< the thread in receive(), if any
};

}  // namespace tavlen
