#pragma once

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/FileDescriptor.h"

/// Descriptors that are not opened by a path. All are close-on-exec: where the system cannot set
/// this in the same call, Spawn keeps them from children that start in between. Threads: any.
namespace tavlen {

/// Two descriptors that are connected.
struct TAVLEN_API Connection {
  FileDescriptor first;   ///< of a pipe, the end that is read
  FileDescriptor second;  ///< of a pipe, the end that is written

  /// Throws std::system_error.
  static Connection pipe();
  /// Two sockets of this machine, each for reading and writing a stream. Throws std::system_error.
  static Connection socketPair();
  /// Two sockets of this machine, each for reading and writing whole messages. Throws
  /// std::system_error.
  static Connection messagePair();
};

/// A socket for IPv4 datagrams. Throws std::system_error.
TAVLEN_API FileDescriptor makeDatagramSocket();

}  // namespace tavlen
