#pragma once

#include <string_view>

#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/coding/Coding.h"

namespace tavlen {

/// Reads one JSON document of `bytes` (UTF-8, or UTF-16 and UTF-32 where a mark or zeros tell)
/// through `read`, and checks that nothing but white space follows it.
///
/// It accepts what the platform's decoder accepts, with two exceptions: a trailing comma is
/// refused, and text that is not UTF-8 also where it is not asked for. Values that are not asked
/// for are skipped with a check of their structure only; of equal keys the first counts. Limits:
/// limits::kJSONDepth containers in one another, limits::kJSONValues values. Values inside of one
/// that is skipped are not counted.
///
/// The reader is the library's own. A well-kept parser's on-demand interface, into the same
/// records, took 0.8 of its time with buffers that are kept, but 1.3 times as much with fresh ones,
/// which every real caller has; and it has neither the positions nor the texts of these errors.
///
/// Memory: for an accepted document at most limits::kDecodedBytes and limits::kDecodedBytesPerByte
/// for each of its bytes, which fuzz/FuzzJSON.cpp checks for the stored documents: that of the
/// values asked for and a few kilobytes; a document in UTF-16 or UTF-32 is converted first, and a
/// type key after large values costs some bytes for each container of over 4 KiB before it. Time is
/// linear in the document.
/// Errors: DecodingError; for a malformed text the message holds its line and column.
/// Threads: any.
void readJSON(std::string_view bytes, FunctionRef<void(Decoder&)> read);

/// The value of type T that the JSON document `bytes` holds; see readJSON.
template <class T>
T decodeJSON(std::string_view bytes) {
  T value{};
  readJSON(bytes, [&](Decoder& decoder) { decode(decoder, value); });
  return value;
}

}  // namespace tavlen
