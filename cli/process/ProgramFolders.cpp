#include "cli/process/ProgramFolders.h"

#include "tavlen/foundation/files/ExecutablePath.h"

namespace tavlen::cli {

std::filesystem::path resourceFolder() {
  return executablePath().parent_path().parent_path() / "share" / "tavlen";
}

std::filesystem::path loaderLibrary() {
  return executablePath().parent_path().parent_path() / "lib" / "tavlen" / "libtavlenloader.so";
}

}  // namespace tavlen::cli
