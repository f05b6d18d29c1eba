#include "dumpagent/ArchiveFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <system_error>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/RetryOnInterrupt.h"

namespace tavlen::dumpagent {

ArchiveFolder::ArchiveFolder(const std::filesystem::path& parent) {
  std::filesystem::create_directories(parent);
  std::string pattern = (parent / "tavlen-dump-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    throwSystemError(pattern);
  }
  path_ = pattern;
}

ArchiveFolder::~ArchiveFolder() {
  if (path_.empty()) return;
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path ArchiveFolder::write(std::string_view bytes) const {
  std::filesystem::path archive = path_ / "classes";
  const FileDescriptor file(
      ::open(archive.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (file.get() < 0) throwSystemError(archive.string());
  while (!bytes.empty()) {
    const ssize_t count =
        retryOnInterrupt([&] { return ::write(file.get(), bytes.data(), bytes.size()); });
    if (count < 0) throwSystemError(archive.string());
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return archive;
}

}  // namespace tavlen::dumpagent
