#include "tavlen/foundation/zip/detail/ZIPWriter.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/zip/detail/ZIPDeflation.h"
#include "tavlen/foundation/zip/detail/ZIPSource.h"

namespace tavlen {

namespace {

/// A file to be archived, as libzip reads it: deflated.
class ItemSource {
 public:
  ItemSource(const ZIPItem& item, ZIPDeflation& deflation, ByteProgress& progress,
             ZIPFailure& failure)
      : item_(item), deflation_(deflation), progress_(progress), failure_(failure) {}

  ZIPFailure& failure() { return failure_; }

  zip_int64_t handle(zip_source_cmd_t command, void* data, zip_uint64_t length) {
    switch (command) {
      case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_READABLE;
      case ZIP_SOURCE_STAT:
        return answerStat(data);
      case ZIP_SOURCE_OPEN:
        progress_.add(0);
        return 0;
      case ZIP_SOURCE_READ:
        return read({static_cast<char*>(data), length});
      case ZIP_SOURCE_CLOSE:
        part_.reset();
        return 0;
      default:
        return -1;
    }
  }

 private:
  /// libzip asks once more after it has read everything, for what is only known then.
  zip_int64_t answerStat(void* data) const {
    const zip_int64_t size = answerZIPStat(data, isRead_ ? size_ : item_.size);
    auto& status = *static_cast<zip_stat_t*>(data);
    status.valid |= ZIP_STAT_COMP_METHOD;
    status.comp_method = ZIP_CM_DEFLATE;
    if (isRead_) {
      status.valid |= ZIP_STAT_CRC;
      status.crc = crc_;
    }
    return size;
  }

  zip_int64_t read(std::span<char> bytes) {
    std::size_t count = 0;
    while (count == 0 && !isRead_) {
      if (!part_) takePart();
      count = part_->bytes.copy(bytes.data(), bytes.size(), used_);
      used_ += count;
      if (used_ < part_->bytes.size()) break;
      isRead_ = part_->isLast;
      part_.reset();  // its memory is not needed while the next one is awaited
    }
    return static_cast<zip_int64_t>(count);
  }

  void takePart() {
    part_ = deflation_.take();
    if (part_->item != &item_) throwSystemError(EIO, item_.path);  // libzip changed the order
    used_ = 0;
    size_ += part_->size;
    crc_ = static_cast<std::uint32_t>(
        ::crc32_combine(crc_, part_->crc, static_cast<z_off_t>(part_->size)));
    if (part_->size > 0) progress_.add(part_->size);
  }

  const ZIPItem& item_;
  ZIPDeflation& deflation_;
  ByteProgress& progress_;
  ZIPFailure& failure_;
  std::optional<ZIPDeflation::Part> part_;
  std::size_t used_ = 0;    ///< of the part's bytes
  std::uint64_t size_ = 0;  ///< of the file, as far as it was read
  std::uint32_t crc_ = 0;   ///< the same
  bool isRead_ = false;
};

/// The archive being written. Buffers libzip's small writes.
///
/// libzip sends the commands of zip_source_function(3): BEGIN_WRITE, then WRITE, SEEK_WRITE and
/// TELL_WRITE, then COMMIT_WRITE, or ROLLBACK_WRITE after an error.
class OutputSource {
 public:
  OutputSource(const FileDescriptor& output, const std::filesystem::path& path, ZIPFailure& failure)
      : output_(output), path_(path), failure_(failure) {
    buffer_.reserve(kBufferSize);
  }

  ZIPFailure& failure() { return failure_; }

  zip_int64_t handle(zip_source_cmd_t command, void* data, zip_uint64_t length) {
    switch (command) {
      case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_WRITABLE;
      case ZIP_SOURCE_STAT:
        return answerZIPStat(data, 0);
      case ZIP_SOURCE_WRITE:
        return write({static_cast<const char*>(data), length});
      case ZIP_SOURCE_SEEK_WRITE:
        return seek(data, length);
      case ZIP_SOURCE_TELL_WRITE:
        return static_cast<zip_int64_t>(position());
      case ZIP_SOURCE_COMMIT_WRITE:
        flush();
        return 0;
      case ZIP_SOURCE_OPEN:
      case ZIP_SOURCE_CLOSE:
      case ZIP_SOURCE_READ:
      case ZIP_SOURCE_BEGIN_WRITE:
      case ZIP_SOURCE_ROLLBACK_WRITE:
      case ZIP_SOURCE_REMOVE:
        return 0;  // nothing to do: the file starts empty, and its owner removes it after an error
      default:
        return -1;
    }
  }

 private:
  static constexpr std::size_t kBufferSize = std::size_t{256} << 10;

  std::uint64_t position() const { return start_ + buffer_.size(); }

  zip_int64_t write(std::string_view bytes) {
    if (bytes.size() > kBufferSize - std::min(kBufferSize, buffer_.size())) flush();
    buffer_.append(bytes);
    size_ = std::max(size_, position());
    return static_cast<zip_int64_t>(bytes.size());
  }

  zip_int64_t seek(void* where, zip_uint64_t length) {
    const zip_int64_t target =
        libzip().zip_source_seek_compute_offset(position(), size_, where, length, nullptr);
    if (target < 0) return -1;
    flush();
    start_ = static_cast<std::uint64_t>(target);
    return 0;
  }

  void flush() {
    output_.writeAt(start_, buffer_, path_);
    start_ += buffer_.size();
    buffer_.clear();
  }

  const FileDescriptor& output_;
  const std::filesystem::path& path_;
  ZIPFailure& failure_;
  std::string buffer_;
  std::uint64_t start_ = 0;  ///< the buffer's offset in the file
  std::uint64_t size_ = 0;
};

class Writer {
 public:
  Writer(const FileDescriptor& output, const std::filesystem::path& path) : path_(path) {
    zip_source_t* source = makeZIPSource(std::make_unique<OutputSource>(output, path, failure_));
    zip_ = libzip().zip_open_from_source(source, ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    if (zip_ == nullptr) {
      libzip().zip_source_free(source);
      throw std::bad_alloc();
    }
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() {
    if (zip_ != nullptr) libzip().zip_discard(zip_);
  }

  void add(const ZIPItem& item, ZIPDeflation& deflation, ByteProgress& progress) {
    constexpr std::uint32_t kDOSFolder = 0x10;
    // 1 January 1980, the first day that the format can hold.
    constexpr zip_uint16_t kFirstDay = 1U << 5U | 1U;
    const zip_int64_t added =
        item.isFolder() ? addFolder(item) : addFile(item, deflation, progress);
    require(added >= 0);
    const auto index = static_cast<zip_uint64_t>(added);
    const std::uint32_t kind = item.isFolder() ? S_IFDIR : S_IFREG;
    const std::uint32_t attributes =
        (kind | (item.mode & 0777U)) << 16U | (item.isFolder() ? kDOSFolder : 0);
    require(libzip().zip_file_set_external_attributes(zip_, index, 0, ZIP_OPSYS_UNIX, attributes) ==
            0);
    require(libzip().zip_file_set_dostime(zip_, index, 0, kFirstDay, 0) == 0);
    require(item.isFolder() ||
            libzip().zip_set_file_compression(zip_, index, ZIP_CM_DEFLATE, 0) == 0);
  }

  /// libzip takes the parts of the files and writes the archive within this call.
  void finish() {
    require(libzip().zip_close(zip_) == 0);
    zip_ = nullptr;
  }

 private:
  zip_int64_t addFolder(const ZIPItem& item) {
    return libzip().zip_dir_add(zip_, item.name.c_str(), ZIP_FL_ENC_UTF_8);
  }

  zip_int64_t addFile(const ZIPItem& item, ZIPDeflation& deflation, ByteProgress& progress) {
    zip_source_t* source =
        makeZIPSource(std::make_unique<ItemSource>(item, deflation, progress, failure_));
    const zip_int64_t index =
        libzip().zip_file_add(zip_, item.name.c_str(), source, ZIP_FL_ENC_UTF_8);
    if (index < 0) libzip().zip_source_free(source);
    return index;
  }

  void require(bool isDone) {
    if (isDone) return;
    failure_.rethrow();
    if (libzip().zip_error_code_zip(libzip().zip_get_error(zip_)) == ZIP_ER_MEMORY)
      throw std::bad_alloc();
    throwSystemError(EIO, path_.string() + ": " + libzip().zip_strerror(zip_));
  }

  const std::filesystem::path& path_;
  ZIPFailure failure_;
  zip_t* zip_ = nullptr;
};

}  // namespace

void writeZIP(const FileDescriptor& output, const std::filesystem::path& path,
              const std::vector<ZIPItem>& items, ByteProgress& progress) {
  ZIPDeflation deflation(items);
  Writer writer(output, path);
  for (const ZIPItem& item : items) writer.add(item, deflation, progress);
  writer.finish();
}

}  // namespace tavlen
