#include "kvfileops/CallerRights.h"

#include <unistd.h>

#include <cstdlib>

#ifdef __linux__
#include <sys/auxv.h>
#endif

#include "tavlen/foundation/base/SystemError.h"

namespace tavlen::fileops {

bool hasLentRights() {
#ifdef __linux__
  const bool isMarked = ::getauxval(AT_SECURE) != 0;
#else
  const bool isMarked = ::issetugid() != 0;
#endif
  // The system marks a program whose file lends rights, not one that inherits them from its caller.
  return isMarked || ::geteuid() != ::getuid() || ::getegid() != ::getgid();
}

CallerRights::CallerRights() : user_(::geteuid()), group_(::getegid()) {
  // The group first: without the user's privileges it could not be changed any more.
  if (::setegid(::getgid()) != 0 || ::seteuid(::getuid()) != 0) {
    throwSystemError("taking the caller's rights");
  }
}

CallerRights::~CallerRights() {
  // The program must not continue with rights other than those that it believes it has.
  if (::seteuid(user_) != 0 || ::setegid(group_) != 0) std::abort();
}

}  // namespace tavlen::fileops
