#include "tavlen/bundles/Executable.h"

#include <dlfcn.h>

#include <system_error>

namespace tavlen {

Executable::Executable(std::weak_ptr<IPA> ipa, const std::filesystem::path& appDir,
                       std::string relativePath, bool isMain)
    : ipa_(std::move(ipa)),
      path_(appDir / relativePath),
      relativePath_(std::move(relativePath)),
      isMain_(isMain) {}

bool Executable::parseDynamically() const {
  // Check the type first: the loader opens the file to compare it, which would block on a pipe.
  std::error_code error;
  if (!std::filesystem::is_regular_file(path_, error)) return false;
  void* image = ::dlopen(path_.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (image == nullptr) return false;
  ::dlclose(image);
  return true;
}

Executable::Error Executable::Error::missing(std::string name) {
  return {Case::missing, {"executable.error.missing", "Missing %@"}, {std::move(name)}};
}

}  // namespace tavlen
