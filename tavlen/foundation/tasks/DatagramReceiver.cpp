#include "tavlen/foundation/tasks/DatagramReceiver.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen {

namespace {

/// Binds without SO_REUSEADDR, which would let a second receiver bind the port and take the
/// datagrams. Returns the bound port.
std::uint16_t bindPort(const FileDescriptor& socket, std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  address.sin_port = htons(port);
  socklen_t size = sizeof(address);
  auto* const general = reinterpret_cast<sockaddr*>(&address);
  if (::bind(socket.get(), general, size) != 0) {
    throwSystemError("bind to UDP port " + std::to_string(port));
  }
  if (::getsockname(socket.get(), general, &size) != 0) throwSystemError("getsockname");
  return ntohs(address.sin_port);
}

}  // namespace

/// RAII: marks the calling thread as the one in receive().
class DatagramReceiver::ReceiveScope {
 public:
  explicit ReceiveScope(DatagramReceiver& receiver) : receiver_(receiver) {
    const std::lock_guard lock(receiver_.lock_);
    mayReceive_ = !receiver_.isClosed_;
    if (mayReceive_) receiver_.receiving_ = std::this_thread::get_id();
  }
  ReceiveScope(const ReceiveScope&) = delete;
  ReceiveScope& operator=(const ReceiveScope&) = delete;
  ~ReceiveScope() {
    if (!mayReceive_) return;
    const std::lock_guard lock(receiver_.lock_);
    receiver_.receiving_ = {};
    // If the handler closed the receiver, close() returned without freeing the port.
    if (receiver_.isClosed_) receiver_.socket_ = FileDescriptor();
    receiver_.ended_.notify_all();
  }

  bool mayReceive() const { return mayReceive_; }

 private:
  DatagramReceiver& receiver_;
  bool mayReceive_ = false;
};

DatagramReceiver::DatagramReceiver(std::uint16_t port)
    : socket_(makeDatagramSocket()), wake_(Connection::pipe()) {
  port_ = bindPort(socket_, port);
}

bool DatagramReceiver::isClosed() {
  const std::lock_guard lock(lock_);
  return isClosed_;
}

void DatagramReceiver::receive(std::size_t mostBytes, Handler handler) {
  const ReceiveScope scope(*this);
  if (!scope.mayReceive()) return;
  std::string buffer(mostBytes, '\0');
  while (waitForDatagram()) {
    const ssize_t size = retryOnInterrupt(
        [&] { return ::recv(socket_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT); });
    if (size < 0) {
      // poll() may report a datagram that recv() then drops because of a bad checksum.
      if (errno == EAGAIN || errno == EWOULDBLOCK) continue;
      return;
    }
    if (!handler(std::string_view(buffer.data(), static_cast<std::size_t>(size)))) return;
  }
}

/// Waits; returns false when the receiver is closed. The pipe is needed because closing the socket
/// would not wake a thread in recv().
bool DatagramReceiver::waitForDatagram() const {
  std::array<pollfd, 2> descriptors = {
      {{socket_.get(), POLLIN, 0}, {wake_.first.get(), POLLIN, 0}}};
  const int count = retryOnInterrupt(
      [&] { return ::poll(descriptors.data(), static_cast<nfds_t>(descriptors.size()), -1); });
  return count > 0 && descriptors[1].revents == 0;
}

void DatagramReceiver::close() {
  std::unique_lock lock(lock_);
  if (!std::exchange(isClosed_, true)) {
    // Cannot block: a pipe has room for one byte, and nothing else is written to it.
    (void)retryOnInterrupt([&] { return ::write(wake_.second.get(), "", 1); });
  }
  if (receiving_ == std::this_thread::get_id()) return;
  ended_.wait(lock, [this] { return receiving_ == std::thread::id(); });
  socket_ = FileDescriptor();
}

}  // namespace tavlen
