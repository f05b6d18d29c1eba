#include "tavlen/foundation/TemporaryDirectory.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace tavlen {

TemporaryDirectory::TemporaryDirectory(const std::filesystem::path& folder) {
  const std::filesystem::path items = folder / ".TemporaryItems";
  std::filesystem::create_directories(items);
  std::string pattern = (items / "XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), pattern);
  }
  path_ = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
  // Only when nobody else works in it.
  std::filesystem::remove(path_.parent_path(), ignored);
}

}  // namespace tavlen
