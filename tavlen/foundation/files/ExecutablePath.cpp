#include "tavlen/foundation/files/ExecutablePath.h"

#if defined(__APPLE__)
#include <mach-o/dyld.h>

#include <cstdint>
#include <string>
#endif

namespace tavlen {

std::filesystem::path executablePath() {
#if defined(__APPLE__)
  std::uint32_t size = 0;
  _NSGetExecutablePath(nullptr, &size);  // stores the required size
  std::string path(size, '\0');
  _NSGetExecutablePath(path.data(), &size);
  return std::filesystem::canonical(path.c_str());
#else
  return std::filesystem::read_symlink("/proc/self/exe");
#endif
}

}  // namespace tavlen
