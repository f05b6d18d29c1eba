#include "tavlen/foundation/files/Connection.h"

#include <sys/socket.h>

#include <array>

#include "tavlen/foundation/base/SystemError.h"

namespace tavlen {

namespace {

#ifdef __APPLE__

constexpr int kSocketFlags = 0;
constexpr int kMessages = SOCK_DGRAM;

int makePipe(int* ends) { return ::pipe(ends); }

void closeOnExec(const FileDescriptor& descriptor) {
  if (::fcntl(descriptor.get(), F_SETFD, FD_CLOEXEC) != 0) throwSystemError("fcntl");
}

#else

constexpr int kSocketFlags = SOCK_CLOEXEC;
// Unlike that of datagrams, the other end is known to have been closed.
constexpr int kMessages = SOCK_SEQPACKET;

int makePipe(int* ends) { return ::pipe2(ends, O_CLOEXEC); }

void closeOnExec(const FileDescriptor& /*descriptor*/) {}

#endif

Connection owned(const std::array<int, 2>& ends) {
  Connection connection{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
  closeOnExec(connection.first);
  closeOnExec(connection.second);
  return connection;
}

Connection makeSocketPair(int type) {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, type | kSocketFlags, 0, ends.data()) != 0) {
    throwSystemError("socketpair");
  }
  return owned(ends);
}

}  // namespace

Connection Connection::pipe() {
  std::array<int, 2> ends{};
  if (makePipe(ends.data()) != 0) throwSystemError("pipe");
  return owned(ends);
}

Connection Connection::socketPair() { return makeSocketPair(SOCK_STREAM); }

Connection Connection::messagePair() { return makeSocketPair(kMessages); }

FileDescriptor makeDatagramSocket() {
  FileDescriptor made(::socket(AF_INET, SOCK_DGRAM | kSocketFlags, 0));
  if (!made) throwSystemError("socket");
  closeOnExec(made);
  return made;
}

}  // namespace tavlen
