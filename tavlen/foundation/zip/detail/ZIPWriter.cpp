#include "tavlen/foundation/zip/detail/ZIPWriter.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/zip/detail/ZIPSource.h"

namespace tavlen {

namespace {

/// A file to be archived. libzip opens it when it gets to it, so the number of entries is not
/// limited by descriptors.
class ItemSource {
 public:
  ItemSource(const ZIPItem& item, ByteProgress& progress, ZIPFailure& failure)
      : item_(item), progress_(progress), failure_(failure) {}

  ZIPFailure& failure() { return failure_; }

  zip_int64_t handle(zip_source_cmd_t command, void* data, zip_uint64_t length) {
    switch (command) {
      case ZIP_SOURCE_SUPPORTS:
        return ZIP_SOURCE_SUPPORTS_READABLE;
      case ZIP_SOURCE_STAT:
        return answerZIPStat(data, item_.size);
      case ZIP_SOURCE_OPEN:
        return open();
      case ZIP_SOURCE_READ:
        return read({static_cast<char*>(data), std::min(length, rest_)});
      case ZIP_SOURCE_CLOSE:
        file_ = FileDescriptor();
        return 0;
      default:
        return -1;
    }
  }

 private:
  zip_int64_t open() {
    file_ = FileDescriptor::open(item_.path, kOpenToRead | O_NOFOLLOW);
    if (!S_ISREG(file_.status(item_.path).st_mode)) throwSystemError(EINVAL, item_.path);
    rest_ = item_.size;
    progress_.add(0);
    return 0;
  }

  zip_int64_t read(std::span<char> bytes) {
    const std::size_t count = file_.read(bytes, item_.path);
    rest_ -= count;
    if (count > 0) progress_.add(count);
    return static_cast<zip_int64_t>(count);
  }

  const ZIPItem& item_;
  ByteProgress& progress_;
  ZIPFailure& failure_;
  FileDescriptor file_;
  std::uint64_t rest_ = 0;
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
        zip_source_seek_compute_offset(position(), size_, where, length, nullptr);
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
    zip_ = zip_open_from_source(source, ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    if (zip_ == nullptr) {
      zip_source_free(source);
      throw std::bad_alloc();
    }
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() {
    if (zip_ != nullptr) zip_discard(zip_);
  }

  void add(const ZIPItem& item, ByteProgress& progress) {
    constexpr zip_uint32_t kFastest = 1;
    constexpr std::uint32_t kDOSFolder = 0x10;
    // 1 January 1980, the first day that the format can hold.
    constexpr zip_uint16_t kFirstDay = 1U << 5U | 1U;
    const zip_int64_t added = item.isFolder() ? addFolder(item) : addFile(item, progress);
    require(added >= 0);
    const auto index = static_cast<zip_uint64_t>(added);
    const std::uint32_t kind = item.isFolder() ? S_IFDIR : S_IFREG;
    const std::uint32_t attributes =
        (kind | (item.mode & 0777U)) << 16U | (item.isFolder() ? kDOSFolder : 0);
    require(zip_file_set_external_attributes(zip_, index, 0, ZIP_OPSYS_UNIX, attributes) == 0);
    require(zip_file_set_dostime(zip_, index, 0, kFirstDay, 0) == 0);
    require(item.isFolder() ||
            zip_set_file_compression(zip_, index, ZIP_CM_DEFLATE, kFastest) == 0);
  }

  /// libzip reads the files and writes the archive within this call.
  void finish() {
    require(zip_close(zip_) == 0);
    zip_ = nullptr;
  }

 private:
  zip_int64_t addFolder(const ZIPItem& item) {
    return zip_dir_add(zip_, item.name.c_str(), ZIP_FL_ENC_UTF_8);
  }

  zip_int64_t addFile(const ZIPItem& item, ByteProgress& progress) {
    zip_source_t* source = makeZIPSource(std::make_unique<ItemSource>(item, progress, failure_));
    const zip_int64_t index = zip_file_add(zip_, item.name.c_str(), source, ZIP_FL_ENC_UTF_8);
    if (index < 0) zip_source_free(source);
    return index;
  }

  void require(bool isDone) {
    if (isDone) return;
    failure_.rethrow();
    if (zip_error_code_zip(zip_get_error(zip_)) == ZIP_ER_MEMORY) throw std::bad_alloc();
    throwSystemError(EIO, path_.string() + ": " + zip_strerror(zip_));
  }

  const std::filesystem::path& path_;
  ZIPFailure failure_;
  zip_t* zip_ = nullptr;
};

}  // namespace

void writeZIP(const FileDescriptor& output, const std::filesystem::path& path,
              const std::vector<ZIPItem>& items, ByteProgress& progress) {
  Writer writer(output, path);
  for (const ZIPItem& item : items) writer.add(item, progress);
  writer.finish();
}

}  // namespace tavlen
