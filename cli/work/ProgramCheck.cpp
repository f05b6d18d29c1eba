#include "cli/work/ProgramCheck.h"

#include <system_error>

#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen::cli {

void requireProgram(const std::filesystem::path& program) {
  const int error = executableError(program);
  if (error != 0) throw std::system_error(error, std::generic_category(), program.string());
}

}  // namespace tavlen::cli
