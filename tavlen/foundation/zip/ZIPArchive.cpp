#include "tavlen/foundation/zip/ZIPArchive.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <numeric>
#include <system_error>
#include <utility>

#include "tavlen/foundation/files/FileDescriptor.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/zip/detail/ByteProgress.h"
#include "tavlen/foundation/zip/detail/ZIPDirectory.h"
#include "tavlen/foundation/zip/detail/ZIPExtraction.h"
#include "tavlen/foundation/zip/detail/ZIPReader.h"
#include "tavlen/foundation/zip/detail/ZIPTree.h"
#include "tavlen/foundation/zip/detail/ZIPWriter.h"

namespace tavlen {

namespace {

namespace fs = std::filesystem;

/// An archive under a temporary name beside its place.
class NewArchive {
 public:
  explicit NewArchive(const fs::path& archive) : archive_(archive) {
    struct stat status {};
    if (::lstat(archive.c_str(), &status) == 0) fail(EEXIST);
    do {
      temporary_ = archive.parent_path() / makeTemporaryName();
      file_ =
          FileDescriptor(::open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    } while (file_.get() < 0 && errno == EEXIST);
    if (file_.get() >= 0) return;
    temporary_.clear();
    fail(errno);
  }
  NewArchive(const NewArchive&) = delete;
  NewArchive& operator=(const NewArchive&) = delete;
  ~NewArchive() {
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
  }

  int descriptor() const { return file_.get(); }
  const fs::path& temporary() const { return temporary_; }

  void commit() {
    if (::fsync(file_.get()) != 0) fail(errno);
    if (::close(file_.release()) != 0 && errno != EINTR) fail(errno);
    moveItem(temporary_, archive_);
    temporary_.clear();
  }

 private:
  [[noreturn]] void fail(int code) const {
    throw std::system_error(code, std::generic_category(), archive_.string());
  }

  const fs::path& archive_;
  fs::path temporary_;
  FileDescriptor file_;
};

}  // namespace

void ZIPArchive::zipItem(const fs::path& item, const fs::path& archive, Progress* progress,
                         const Limits& limits) {
  const std::vector<ZIPItem> items = readZIPTree(item, limits);
  ByteProgress bytes(progress, std::accumulate(items.begin(), items.end(), std::uint64_t{0},
                                               [](std::uint64_t sum, const ZIPItem& each) {
                                                 return sum + each.size;
                                               }));
  NewArchive output(archive);
  writeZIP(output.descriptor(), archive, items, bytes);
  // As a reader will judge it: only now is it known how small the data has become.
  readZIPDirectory(RandomAccessFile(output.temporary()), limits);
  output.commit();
  bytes.finish();
}

void ZIPArchive::unzipItem(const fs::path& archive, const fs::path& destination, Progress* progress,
                           const Limits& limits, std::string_view onlyTop) {
  const RandomAccessFile file(archive);
  const std::vector<ZIPEntry> entries = readZIPDirectory(file, limits, onlyTop);
  ZIPReader reader(file, entries);
  std::uint64_t total = 0;
  for (const ZIPEntry& entry : entries) total += entry.isWithin(onlyTop) ? entry.size : 0;
  ByteProgress bytes(progress, total);

  ZIPExtraction extraction(destination);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const ZIPEntry& entry = entries[i];
    if (!entry.isWithin(onlyTop)) continue;
    bytes.add(0);
    if (entry.isFolder()) {
      extraction.makeFolder(entry.name, entry.mode);
      continue;
    }
    extraction.makeFile(entry.name, entry.mode, [&](ZIPExtraction::Sink sink) {
      reader.read(i, [&](std::string_view piece) {
        sink(piece);
        bytes.add(piece.size());
      });
    });
  }
  extraction.keep();
  bytes.finish();
}

}  // namespace tavlen
