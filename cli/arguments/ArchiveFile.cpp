#include "cli/arguments/ArchiveFile.h"

#include <filesystem>
#include <system_error>

#include "tavlen/foundation/files/RandomAccessFile.h"

namespace tavlen::cli {

namespace {

constexpr std::string_view kSignature = "PK\x03\x04";

}  // namespace

bool isZIP(std::string_view bytes) { return bytes.starts_with(kSignature); }

bool isArchive(const std::string& text) {
  std::error_code ignored;
  if (!std::filesystem::is_regular_file(text, ignored)) return false;
  return std::filesystem::path(text).extension() == ".ipa" ||
         isZIP(RandomAccessFile(text).read(0, kSignature.size()));
}

}  // namespace tavlen::cli
