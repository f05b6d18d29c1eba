#include "dumpagent/ArchiveFolder.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <string>
#include <system_error>

namespace tavlen::dumpagent {

ArchiveFolder::ArchiveFolder(const std::filesystem::path& parent) {
  std::filesystem::create_directories(parent);
  std::string pattern = (parent / "tavlen-dump-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    throw std::system_error(errno, std::generic_category(), pattern);
  }
  path_ = pattern;
}

ArchiveFolder::~ArchiveFolder() {
  if (path_.empty()) return;
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path ArchiveFolder::write(std::string_view bytes) const {
  const std::filesystem::path archive = path_ / "classes";
  std::ofstream file(archive, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush();
  if (!file) throw std::system_error(EIO, std::generic_category(), archive.string());
  return archive;
}

}  // namespace tavlen::dumpagent
