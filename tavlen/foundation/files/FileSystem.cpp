#include "tavlen/foundation/files/FileSystem.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {

std::optional<std::string> contentsUpTo(const RandomAccessFile& file, std::size_t most) {
  if (file.size() > most) return std::nullopt;
  // The size is a hint: the file may grow or shrink while it is read. One more byte lets the read
  // see the end.
  std::string bytes = file.read(0, static_cast<std::size_t>(file.size()) + 1);
  for (std::size_t more = bytes.size(); bytes.size() > file.size(); more *= 2) {
    const std::string next = file.read(bytes.size(), more);
    bytes += next;
    if (bytes.size() > most) return std::nullopt;
    if (next.size() < more) break;
  }
  return bytes;
}

}  // namespace

std::string readFile(const std::filesystem::path& path) { return readFileNamed(path.string()); }

std::string readFileNamed(const std::string& path, int folder, std::size_t most) {
  std::optional<std::string> bytes = contentsUpTo(RandomAccessFile(path, folder), most);
  if (!bytes) throwSystemError(EFBIG, path + ": more than " + std::to_string(most) + " bytes");
  return std::move(*bytes);
}

std::optional<std::string> readFileUpTo(const std::filesystem::path& path, std::size_t most) {
  return contentsUpTo(RandomAccessFile(path), most);
}

std::string readText(const std::filesystem::path& path) {
  std::string bytes = readFile(path);
  const ByteOrderMark mark = byteOrderMarkOf(bytes).value_or(ByteOrderMark{TextEncoding::utf8, 0});
  bytes.erase(0, mark.length);
  std::string text;
  if (!convertToUTF8(bytes, mark.encoding, text))
    throwSystemError(EILSEQ, path.string() + ": the text is malformed in its encoding");
  return text;
}

bool isTaken(const std::filesystem::path& path) {
  std::error_code error;
  return std::filesystem::symlink_status(path, error).type() !=
         std::filesystem::file_type::not_found;
}

int executableError(const std::filesystem::path& path) {
  if (::access(path.c_str(), X_OK) != 0) return errno;
  std::error_code error;
  if (std::filesystem::is_regular_file(path, error)) return 0;
  return error ? error.value() : EACCES;
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
