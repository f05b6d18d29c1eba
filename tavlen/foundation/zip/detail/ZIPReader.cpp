#include "tavlen/foundation/zip/detail/ZIPReader.h"

#include <memory>
#include <span>

#include "tavlen/foundation/zip/ZIPError.h"

namespace tavlen {

namespace {

constexpr std::size_t kBufferSize = std::size_t{256} << 10;

/// Gives libzip the bytes of the archive through the descriptor that is already open.
class ArchiveSource {
 public:
  ArchiveSource(const RandomAccessFile& file, ZIPFailure& failure)
      : file_(file), failure_(failure) {}

  ZIPFailure& failure() { return failure_; }

  zip_int64_t handle(zip_source_cmd_t command, void* data, zip_uint64_t length) {
    switch (command) {
      case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_SEEKABLE;
      case ZIP_SOURCE_STAT:
        return answerZIPStat(data, file_.size());
      case ZIP_SOURCE_OPEN:
        position_ = 0;
        return 0;
      case ZIP_SOURCE_READ:
        return read({static_cast<char*>(data), length});
      case ZIP_SOURCE_SEEK:
        return seek(data, length);
      case ZIP_SOURCE_TELL:
        return static_cast<zip_int64_t>(position_);
      case ZIP_SOURCE_CLOSE:
        return 0;
      default:
        return -1;
    }
  }

 private:
  zip_int64_t read(std::span<char> bytes) {
    const std::size_t count = file_.readInto(position_, bytes);
    position_ += count;
    return static_cast<zip_int64_t>(count);
  }

  zip_int64_t seek(void* where, zip_uint64_t length) {
    const zip_int64_t position =
        libzip().zip_source_seek_compute_offset(position_, file_.size(), where, length, nullptr);
    if (position < 0) return -1;
    position_ = static_cast<std::uint64_t>(position);
    return 0;
  }

  const RandomAccessFile& file_;
  ZIPFailure& failure_;
  std::uint64_t position_ = 0;
};

}  // namespace

struct ZIPReader::Closer {
  void operator()(zip_file_t* file) const { libzip().zip_fclose(file); }
};

ZIPReader::ZIPReader(const RandomAccessFile& archive, const std::vector<ZIPEntry>& entries)
    : entries_(entries), buffer_(kBufferSize) {
  zip_source_t* source = makeZIPSource(std::make_unique<ArchiveSource>(archive, failure_));
  zip_error_t error;
  libzip().zip_error_init(&error);
  zip_ = libzip().zip_open_from_source(source, ZIP_RDONLY, &error);
  const int code = libzip().zip_error_code_zip(&error);
  libzip().zip_error_fini(&error);
  try {
    if (zip_ == nullptr) {
      libzip().zip_source_free(source);
      failure_.rethrow();
      if (code == ZIP_ER_MEMORY) throw std::bad_alloc();
      throw ZIPError(ZIPError::Case::damagedArchive, "its directory cannot be read");
    }
    requireSameDirectory();
  } catch (...) {
    if (zip_ != nullptr) libzip().zip_discard(zip_);
    throw;
  }
}

ZIPReader::~ZIPReader() { libzip().zip_discard(zip_); }

/// Verifies that libzip sees the directory that was checked, so that nothing unchecked is
/// extracted. Names come from the checked directory, and size and CRC identify the data, so
/// comparing the fields below is enough.
void ZIPReader::requireSameDirectory() const {
  bool isSame = libzip().zip_get_num_entries(zip_, 0) == static_cast<zip_int64_t>(entries_.size());
  for (std::size_t i = 0; isSame && i < entries_.size(); ++i) {
    zip_stat_t status;
    isSame = libzip().zip_stat_index(zip_, i, 0, &status) == 0 && status.size == entries_[i].size &&
             status.comp_size == entries_[i].compressedSize && status.crc == entries_[i].checksum &&
             status.comp_method == entries_[i].method;
  }
  if (!isSame) {
    throw ZIPError(ZIPError::Case::damagedArchive, "its directory is ambiguous");
  }
}

ZIPReader::OpenEntry ZIPReader::open(std::size_t index) const {
  OpenEntry file(libzip().zip_fopen_index(zip_, index, 0));
  if (file == nullptr)
    fail(entries_[index], 0, libzip().zip_error_code_zip(libzip().zip_get_error(zip_)));
  return file;
}

std::size_t ZIPReader::readPiece(zip_file_t* file, const ZIPEntry& entry, std::uint64_t done,
                                 std::size_t count) {
  const zip_int64_t got = libzip().zip_fread(file, buffer_.data(), count);
  if (got < 0) fail(entry, done, libzip().zip_error_code_zip(libzip().zip_file_get_error(file)));
  const auto size = static_cast<std::size_t>(got);
  // Check here, not at the end: the limits were applied to the recorded size.
  if (size > entry.size - done) throw ZIPError(ZIPError::Case::sizeMismatch, entry.name);
  return size;
}

void ZIPReader::read(std::size_t index, FunctionRef<void(std::string_view)> take) {
  const ZIPEntry& entry = entries_[index];
  const OpenEntry file = open(index);
  std::uint64_t done = 0;
  while (const std::size_t size = readPiece(file.get(), entry, done, buffer_.size())) {
    done += size;
    take({buffer_.data(), size});
  }
  if (done != entry.size) throw ZIPError(ZIPError::Case::sizeMismatch, entry.name);
}

std::string ZIPReader::readFirst(std::size_t index, std::size_t count) {
  const OpenEntry file = open(index);
  std::string first;
  while (first.size() < count) {
    const std::size_t size =
        readPiece(file.get(), entries_[index], first.size(), count - first.size());
    if (size == 0) break;
    first.append(buffer_.data(), size);
  }
  return first;
}

void ZIPReader::fail(const ZIPEntry& entry, std::uint64_t done, int code) const {
  using Case = ZIPError::Case;
  failure_.rethrow();
  switch (code) {
    case ZIP_ER_MEMORY:
      throw std::bad_alloc();
    case ZIP_ER_CRC:
      throw ZIPError(done == entry.size ? Case::checksumMismatch : Case::sizeMismatch, entry.name);
    case ZIP_ER_INCONS:
      throw ZIPError(Case::sizeMismatch, entry.name);
    case ZIP_ER_COMPNOTSUPP:
    case ZIP_ER_ENCRNOTSUPP:
    case ZIP_ER_NOPASSWD:
      throw ZIPError(Case::unsupportedEntry, entry.name);
    default:
      throw ZIPError(Case::damagedData, entry.name);
  }
}

}  // namespace tavlen
