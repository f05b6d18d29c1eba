#pragma once

#include <sys/types.h>

namespace tavlen::fileops {

/// Whether the process has other rights than its caller, as a file that is setuid or setgid lends
/// them. To be asked while no CallerRights lives.
bool hasLentRights();

/// While it lives, files are opened and made with the rights of the user who called the program,
/// not with those that the program has in addition: for paths that the caller chooses freely.
/// Changes nothing where both are the same. The rights are the whole process's: one thread only.
class CallerRights {
 public:
  /// Throws std::system_error.
  CallerRights();
  CallerRights(const CallerRights&) = delete;
  CallerRights& operator=(const CallerRights&) = delete;
  ~CallerRights();

 private:
  uid_t user_;
  gid_t group_;
};

}  // namespace tavlen::fileops
