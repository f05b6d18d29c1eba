#include "tavlen/foundation/TemporaryDirectory.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace tavlen {

TemporaryDirectory::TemporaryDirectory(const std::filesystem::path& folder) {
  const std::filesystem::path items = folder / ".TemporaryItems";
  // Another's end may remove the common folder between the two calls.
  constexpr int kAttempts = 100;
  for (int attempt = 1; path_.empty(); ++attempt) {
    std::filesystem::create_directories(items);
    std::string pattern = (items / "XXXXXX").string();
    if (::mkdtemp(pattern.data()) != nullptr) {
      path_ = pattern;
    } else if (errno != ENOENT || attempt == kAttempts) {
      throw std::system_error(errno, std::generic_category(), pattern);
    }
  }
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
  // Only when nobody else works in it.
  std::filesystem::remove(path_.parent_path(), ignored);
}

}  // namespace tavlen
