#include "tavlen/foundation/files/PeerEnd.h"

#ifdef __APPLE__
#include <fcntl.h>
#include <sys/stat.h>
#endif

namespace tavlen {

pollfd pollForPeerEnd(int descriptor) {
#ifdef __APPLE__
  // The kernel reports POLLHUP only with an event that is requested. On anything other than one
  // end of a pipe that event may be input.
  struct stat status {};
  const bool isPipe = ::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode) &&
                      (::fcntl(descriptor, F_GETFL) & O_ACCMODE) != O_RDWR;
  return {descriptor, isPipe ? short{POLLIN} : short{0}, 0};
#else
  return {descriptor, 0, 0};  // POLLHUP and POLLERR are always reported
#endif
}

}  // namespace tavlen
