#include "dumpagent/ArchiveFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include "tavlen/foundation/FileDescriptor.h"
#include "tavlen/foundation/Interruption.h"

namespace tavlen::dumpagent {

namespace {

[[noreturn]] void fail(const std::filesystem::path& path) {
  throw std::system_error(errno, std::generic_category(), path.string());
}

}  // namespace

ArchiveFolder::ArchiveFolder(const std::filesystem::path& parent) {
  std::filesystem::create_directories(parent);
  std::string pattern = (parent / "tavlen-dump-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    fail(pattern);
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
  if (file.get() < 0) fail(archive);
  while (!bytes.empty()) {
    const ssize_t count =
        uninterrupted([&] { return ::write(file.get(), bytes.data(), bytes.size()); });
    if (count < 0) fail(archive);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return archive;
}

}  // namespace tavlen::dumpagent
