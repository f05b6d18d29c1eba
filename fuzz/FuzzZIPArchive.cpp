// Unpacking any archive, or single files of it, creates only files and folders, and only inside the
// destination folder.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "fuzz/Budget.h"
#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/TemporaryDirectory.h"
#include "tavlen/foundation/zip/ZIPArchive.h"
#include "tavlen/foundation/zip/ZIPError.h"
#include "tavlen/foundation/zip/ZIPFileReader.h"

using namespace tavlen;

namespace {

namespace fs = std::filesystem;

constexpr ZIPArchive::Limits kLimits = {.entries = 100,
                                        .entryBytes = 1 << 16,
                                        .archiveBytes = 1 << 17,
                                        .ratio = 50,
                                        .ratioFreeBytes = 1 << 15};

/// A name takes a byte a folder, and each of those an entry in a table.
constexpr fuzz::Budget kBudget = {.bytes = 2 << 20, .bytesPerByte = 256, .secondsPerByte = 1e-3};

void require(bool condition) {
  if (!condition) std::abort();
}

void requireFilesAndFolders(const fs::path& folder) {
  std::uintmax_t bytes = 0;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
    require(!entry.is_symlink() && (entry.is_directory() || entry.is_regular_file()));
    if (entry.is_regular_file()) bytes += entry.file_size();
  }
  require(bytes <= kLimits.archiveBytes);
}

/// Calls `unpack`, which makes `out` or throws.
template <class Unpack>
void requireCleanWork(const fs::path& out, std::size_t size, const Unpack& unpack) {
  bool isTaken = false;
  try {
    fuzz::requireWithin(kBudget, size, unpack);
    isTaken = true;
  } catch (const ZIPError&) {
  } catch (const std::system_error&) {
    // The file system does not accept the name.
  }
  require(fs::exists(out) == isTaken);
  if (isTaken) {
    requireFilesAndFolders(out);
    fs::remove_all(out);
  }
  require(fs::is_empty(out.parent_path()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryDirectory folder(fs::is_directory("/dev/shm") ? "/dev/shm"
                                                                      : fs::temp_directory_path());
  const FileDescriptor file(::memfd_create("archive", MFD_CLOEXEC));
  require(file.get() >= 0);
  require(::write(file.get(), data, size) == static_cast<ssize_t>(size));
  const fs::path out = folder.path() / "out";
  const std::string archive = "/proc/self/fd/" + std::to_string(file.get());
  requireCleanWork(out, size, [&] { ZIPArchive::unzipItem(archive, out, nullptr, kLimits); });
  requireCleanWork(out, size, [&] {
    ZIPFileReader reader(archive, kLimits);
    if (!reader.names().empty()) require(reader.firstBytes(reader.names().front(), 4).size() <= 4);
    reader.unpack(reader.names(), out);
  });
  return 0;
}
