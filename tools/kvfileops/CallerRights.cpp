#include "kvfileops/CallerRights.h"

#include <unistd.h>

#include <cstdlib>

#include "tavlen/foundation/base/SystemError.h"

namespace tavlen::fileops {

CallerRights::CallerRights() : user_(::geteuid()), group_(::getegid()) {
  // The group first: without the user's privileges it could not be changed any more.
  if (::setegid(::getgid()) != 0 || ::seteuid(::getuid()) != 0) {
    throwSystemError("taking the caller's rights");
  }
}

CallerRights::~CallerRights() {
  // With other rights than it believes to have, the program must not go on.
  if (::seteuid(user_) != 0 || ::setegid(group_) != 0) std::abort();
}

}  // namespace tavlen::fileops
