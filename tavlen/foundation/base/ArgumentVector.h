#pragma once

#include <string>
#include <vector>

#include "tavlen/foundation/base/API.h"

/// What posix_spawn() is called with. Threads: any, as long as none changes the environment.
namespace tavlen {

/// A copy of a program's arguments in the form of the system call.
class TAVLEN_API ArgumentVector {
 public:
  /// `arguments` is the whole vector, beginning with the program's name.
  explicit ArgumentVector(const std::vector<std::string>& arguments);
  ArgumentVector(const ArgumentVector&) = delete;
  ArgumentVector& operator=(const ArgumentVector&) = delete;

  /// The texts, and a null pointer after them. Valid as long as the object.
  char* const* data() const { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

/// The variables of this process, and a null pointer after them.
TAVLEN_API char** environmentOfProcess();

/// Replaces the variables of this process by `variables`, which end with a null pointer and must
/// outlive the process. No other thread may read or change the variables during the call.
TAVLEN_API void setEnvironmentOfProcess(char** variables);

}  // namespace tavlen
