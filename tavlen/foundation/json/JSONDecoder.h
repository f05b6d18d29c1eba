#pragma once

#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"
#include "tavlen/foundation/coding/Coding.h"
#include "tavlen/foundation/json/IgnoredKeys.h"

namespace tavlen {

/// Reads the JSON document `bytes` through `read`, and checks that only white space follows it. The
/// encoding is UTF-8, or UTF-16 or UTF-32 where a byte order mark or zero bytes show that.
///
/// It accepts what the platform's decoder accepts, with two exceptions: trailing commas are
/// refused, and so is malformed UTF-8 even in values that are not read. Values that `read` does not
/// ask for are skipped with a check of their structure only; of equal keys the first counts.
/// Limits: limits::kJSONDepth nested containers, limits::kJSONValues values; values inside a
/// skipped one are not counted.
///
/// This is our own reader because its errors name the place, and because it needs neither a padded
/// copy of the text nor a processor with certain vectors. bench/ManifestBenchmark.cpp compares it
/// with a reader into the same records on simdjson, which was measured to take nine tenths of its
/// time where the compiler may use AVX2, and eight tenths with buffers that are kept.
///
/// Memory: for an accepted document at most limits::kDecodedBytes plus limits::kDecodedBytesPerByte
/// for each of its bytes, which fuzz/FuzzJSON.cpp checks for the stored documents: that of the
/// values read and a few kilobytes. A document in UTF-16 or UTF-32 is converted first; a type key
/// after large values costs some bytes for each container of over 4 KiB before it. Time is linear
/// in the document.
/// Errors: DecodingError; with the place in the text, unless its encoding is at fault. Threads:
/// any.
TAVLEN_API void readJSON(std::string_view bytes, FunctionRef<void(Decoder&)> read);
/// The same, and adds the keys that were ignored to `ignored`, at their places in the text. An
/// unread value does not count as ignored within a value that is itself unread.
TAVLEN_API void readJSON(std::string_view bytes, FunctionRef<void(Decoder&)> read,
                         IgnoredKeys& ignored);

/// Decodes the JSON document `bytes` as a T. Errors, memory and threads as for readJSON().
template <class T>
T decodeJSON(std::string_view bytes) {
  T value{};
  readJSON(bytes, [&](Decoder& decoder) { decode(decoder, value); });
  return value;
}
/// The same, and adds the keys that were ignored to `ignored`.
template <class T>
T decodeJSON(std::string_view bytes, IgnoredKeys& ignored) {
  T value{};
  readJSON(
      bytes, [&](Decoder& decoder) { decode(decoder, value); }, ignored);
  return value;
}

}  // namespace tavlen
