#include "tavlen/foundation/FileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "tavlen/foundation/Unicode.h"

namespace tavlen {

namespace {

[[noreturn]] void fail(int code, const std::filesystem::path& path) {
  throw std::system_error(code, std::generic_category(), path.string());
}

/// No document comes near it, and a sparse file of any size is made in no time.
constexpr std::size_t kLargestFile = std::size_t{1} << 31;

class Descriptor {
 public:
  explicit Descriptor(int value) : value_(value) {}
  ~Descriptor() { ::close(value_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int value() const { return value_; }

 private:
  int value_;
};

int openForReading(const std::filesystem::path& path) {
  // Without O_NONBLOCK a pipe that nobody writes to would never be opened.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0) fail(errno, path);
  return descriptor;
}

std::size_t sizeOfRegularFile(int descriptor, const std::filesystem::path& path) {
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) fail(errno, path);
  if (S_ISDIR(status.st_mode)) fail(EISDIR, path);
  if (!S_ISREG(status.st_mode)) fail(EINVAL, path.string() + ": not a regular file");
  return static_cast<std::size_t>(status.st_size);
}

std::string checkedUTF8(std::string text, const std::filesystem::path& path) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (!isValidUTF8(text)) fail(EILSEQ, path.string() + ": the text is malformed in its encoding");
  if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
  return text;
}

struct ByteOrderMark {
  std::string_view bytes;
  TextEncoding encoding;
};

// The four-byte marks first: one of them begins with a two-byte mark.
constexpr std::array<ByteOrderMark, 4> kWideMarks = {{
    {{"\xFF\xFE\0\0", 4}, TextEncoding::utf32LittleEndian},
    {{"\0\0\xFE\xFF", 4}, TextEncoding::utf32BigEndian},
    {{"\xFE\xFF", 2}, TextEncoding::utf16BigEndian},
    {{"\xFF\xFE", 2}, TextEncoding::utf16LittleEndian},
}};

}  // namespace

std::string readFile(const std::filesystem::path& path) {
  std::optional<std::string> bytes = readFileUpTo(path, kLargestFile);
  if (!bytes) fail(EFBIG, path);
  return std::move(*bytes);
}

std::optional<std::string> readFileUpTo(const std::filesystem::path& path, std::size_t most) {
  const Descriptor file(openForReading(path));
  const std::size_t size = sizeOfRegularFile(file.value(), path);
  if (size > most) return std::nullopt;
  // The size is a hint: the file may grow or shrink while it is read. One more byte lets the last
  // read see the end without another allocation.
  std::string bytes(size + 1, '\0');
  std::size_t used = 0;
  while (used <= most) {
    if (used == bytes.size()) bytes.resize(bytes.size() * 2);
    const ssize_t count = ::read(file.value(), bytes.data() + used, bytes.size() - used);
    if (count == 0) {
      bytes.resize(used);
      return bytes;
    }
    if (count > 0) {
      used += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      fail(errno, path);
    }
  }
  return std::nullopt;
}

std::string readText(const std::filesystem::path& path) {
  std::string bytes = readFile(path);
  for (const ByteOrderMark& mark : kWideMarks) {
    if (!bytes.starts_with(mark.bytes)) continue;
    std::string text;
    const std::string_view rest = std::string_view(bytes).substr(mark.bytes.size());
    if (!convertToUTF8(rest, mark.encoding, text))
      fail(EILSEQ, path.string() + ": the text is malformed in its encoding");
    return text;
  }
  return checkedUTF8(std::move(bytes), path);
}

bool isPlainComponent(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

std::optional<std::filesystem::path> pathInside(const std::filesystem::path& folder,
                                                std::string_view name) {
  const std::filesystem::path relative(name);
  if (name.empty() || name.find('\0') != std::string_view::npos || relative.is_absolute()) {
    return std::nullopt;
  }
  std::error_code error;
  const std::filesystem::path base = std::filesystem::weakly_canonical(folder, error);
  if (error) return std::nullopt;
  const std::filesystem::path file = std::filesystem::weakly_canonical(base / relative, error);
  if (error) return std::nullopt;
  const auto [inBase, inFile] = std::mismatch(base.begin(), base.end(), file.begin(), file.end());
  if (inBase != base.end() || inFile == file.end()) return std::nullopt;
  return file;
}

}  // namespace tavlen
