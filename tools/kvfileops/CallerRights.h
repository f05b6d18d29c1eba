#pragma once

#include <sys/types.h>

namespace tavlen::fileops {

/// While it lives, files are opened and made with the rights of the user who called the program,
/// not with those that the program has beyond: for paths that the caller chooses freely. Changes
/// nothing where both are the same.
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
