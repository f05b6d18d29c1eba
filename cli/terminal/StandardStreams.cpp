#include "cli/terminal/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace tavlen::cli {

void occupyClosedStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (::fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
    // It gets the lowest free descriptor, which is this one, for the wrong direction.
    (void)::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

}  // namespace tavlen::cli
