#include "tavlen/foundation/files/PeerEnd.h"

#include <sys/stat.h>

namespace tavlen {

pollfd pollForPeerEnd(int descriptor) {
  struct stat status {};
  const bool isPipe = ::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
  // Linux always reports POLLHUP. Apple's kernel reports it only with an event that is requested,
  // and on anything other than a pipe that event may be input.
  return {descriptor, isPipe ? short{POLLIN} : short{0}, 0};
}

}  // namespace tavlen
