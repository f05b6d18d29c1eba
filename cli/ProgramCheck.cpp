#include "cli/ProgramCheck.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tavlen::cli {

void requireProgram(const std::filesystem::path& program) {
  if (::access(program.c_str(), X_OK) == 0) return;
  throw std::system_error(errno, std::generic_category(), program.string());
}

}  // namespace tavlen::cli
