#include "dumpagent/ArchiveFolder.h"

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"

namespace tavlen::dumpagent {

ArchiveFolder::ArchiveFolder(const std::filesystem::path& parent) {
  std::filesystem::create_directories(parent);
  path_ = makeUniqueFolder(parent, "tavlen-dump-");
}

ArchiveFolder::~ArchiveFolder() {
  if (!path_.empty()) removeQuietly(path_);
}

std::filesystem::path ArchiveFolder::write(std::string_view bytes) const {
  std::filesystem::path archive = path_ / "classes";
  FileDescriptor::open(archive, kOpenNewFile, S_IRUSR | S_IWUSR).write(bytes, archive);
  return archive;
}

}  // namespace tavlen::dumpagent
