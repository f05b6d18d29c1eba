#pragma once

#include <string_view>

#include "tavlen/foundation/Coding.h"
#include "tavlen/foundation/FunctionRef.h"

namespace tavlen {

/// Reads one JSON document of `bytes` (UTF-8, or UTF-16 and UTF-32 where a mark or zeros tell)
/// through `read`, and checks that nothing but white space follows it.
///
/// It accepts what the platform's decoder accepts, with one exception: a trailing comma is refused.
/// Values that nobody asks for are skipped with a check of their structure only; of equal keys the
/// first counts. At most 512 containers may be nested. Memory: that of the values asked for and a
/// few kilobytes, whatever the document. Errors: DecodingError; for a malformed text the message
/// holds its line and column.
void readJSON(std::string_view bytes, FunctionRef<void(Decoder&)> read);

/// The value of type T that the JSON document `bytes` holds; see readJSON.
template <class T>
T decodeJSON(std::string_view bytes) {
  T value{};
  readJSON(bytes, [&](Decoder& decoder) { decode(decoder, value); });
  return value;
}

}  // namespace tavlen
