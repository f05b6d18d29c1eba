#include "tavlen/items/StoredDocument.h"

#include <system_error>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/files/FileSystem.h"

namespace tavlen {

namespace {

std::string tooLarge() {
  return "the document has more than " + std::to_string(limits::kDocumentBytes) + " bytes";
}

}  // namespace

std::string readDocument(const RandomAccessFile& file) {
  try {
    return readFile(file, limits::kDocumentBytes);
  } catch (const std::system_error& error) {
    if (error.code() != std::errc::file_too_large) throw;
    throw DecodingError::dataCorrupted(tooLarge());
  }
}

void requireReadableSize(std::string_view document) {
  if (document.size() > limits::kDocumentBytes) throw DecodingError::dataCorrupted(tooLarge());
}

void requireWritableSize(std::string_view document) {
  if (document.size() > limits::kDocumentBytes) throw EncodingError::invalidValue(tooLarge());
}

}  // namespace tavlen
