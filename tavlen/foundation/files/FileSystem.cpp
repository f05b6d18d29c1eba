#include "tavlen/foundation/files/FileSystem.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "tavlen/foundation/base/SystemError.h"
#include "tavlen/foundation/text/Unicode.h"

namespace tavlen {

namespace {}  // namespace

std::string readFile(const RandomAccessFile& file, std::size_t most) {
  std::optional<std::string> bytes = readFileUpTo(file, most);
  if (!bytes)
    throwSystemError(EFBIG, file.path() + ": more than " + std::to_string(most) + " bytes");
  return std::move(*bytes);
}

std::string readFile(const std::filesystem::path& path) { return readFile(RandomAccessFile(path)); }

std::optional<std::string> readFileUpTo(const RandomAccessFile& file, std::size_t most) {
  if (file.size() > most) return std::nullopt;
  // The size is a hint: the file may grow or shrink while it is read. The extra byte lets the read
  // detect the end.
  std::string bytes = file.read(0, static_cast<std::size_t>(file.size()) + 1);
  for (std::size_t more = bytes.size(); bytes.size() > file.size(); more *= 2) {
    const std::string next = file.read(bytes.size(), more);
    bytes += next;
    if (bytes.size() > most) return std::nullopt;
    if (next.size() < more) break;
  }
  return bytes;
}

std::optional<std::string> readFileUpTo(const std::filesystem::path& path, std::size_t most) {
  return readFileUpTo(RandomAccessFile(path), most);
}

std::string readText(const RandomAccessFile& file) {
  std::optional<std::string> text = textFromBytes(readFile(file));
  if (!text) throwSystemError(EILSEQ, file.path());
  return *std::move(text);
}

std::string readText(const std::filesystem::path& path) { return readText(RandomAccessFile(path)); }

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
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
         name.find('\0') == std::string_view::npos;
}

bool isAtOrBelow(const std::filesystem::path& path, const std::filesystem::path& folder) {
  return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first ==
         folder.end();
}

bool isRelativeName(std::string_view name) {
  return !name.empty() && name.front() != '/' && name.find('\0') == std::string_view::npos;
}

std::optional<std::filesystem::path> pathInside(const std::filesystem::path& folder,
                                                std::string_view name) {
  if (!isRelativeName(name)) return std::nullopt;
  std::error_code error;
  const std::filesystem::path base = std::filesystem::weakly_canonical(folder, error);
  if (error) return std::nullopt;
  std::filesystem::path file = std::filesystem::weakly_canonical(base / name, error);
  if (error || file == base || !isAtOrBelow(file, base)) return std::nullopt;
  return file;
}

}  // namespace tavlen
