#pragma once

#include <cstddef>
#include <string_view>

namespace tavlen {

/// The most bytes to which writeJSONCharacters() writes for a text of `length` bytes.
constexpr std::size_t roomForJSONCharacters(std::size_t length) {
  constexpr std::size_t kBlock = 16;  // whole blocks are written, of which a part counts
  return 6 * length + kBlock;
}

/// Writes `text` to `to` as a JSON string without its quotation marks: "/" and what JSON requires
/// is escaped. Returns the end; the bytes up to roomForJSONCharacters() have no meaning. Clears
/// `isASCII` when a byte is not ASCII. Throws nothing. Threads: any.
char* writeJSONCharacters(char* to, std::string_view text, bool& isASCII);

}  // namespace tavlen
