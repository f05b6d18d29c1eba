#pragma once

#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/files/RandomAccessFile.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"

/// The JSON documents of the store, within the limits of Limits.h: what is written can be read.
/// Threads: any.
namespace tavlen {

/// The bytes of the document `file`. Throws DecodingError for more than limits::kDocumentBytes, of
/// which no more are read, and std::system_error.
TAVLEN_API std::string readDocument(const RandomAccessFile& file);

/// Throws DecodingError for more than limits::kDocumentBytes.
TAVLEN_API void requireReadableSize(std::string_view document);
/// Throws EncodingError for more than limits::kDocumentBytes.
TAVLEN_API void requireWritableSize(std::string_view document);

/// The record that `document` holds. Throws DecodingError.
template <class Record>
Record decodeDocument(std::string_view document) {
  requireReadableSize(document);
  return decodeJSON<Record>(document);
}
/// The same, and adds the keys that no record has, or that are repeated, to `ignored`.
template <class Record>
Record decodeDocument(std::string_view document, IgnoredKeys& ignored) {
  requireReadableSize(document);
  return decodeJSON<Record>(document, ignored);
}

/// The document of `record`. Throws EncodingError.
template <class Record>
std::string encodeDocument(const Record& record) {
  std::string document = encodeJSON(record);
  requireWritableSize(document);
  return document;
}

}  // namespace tavlen
