#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The name of a ZIP archive's entry, on its own (APPNOTE.TXT 4.4.17, 4.6.9, appendix D). Threads:
/// any.
namespace tavlen {

/// Decodes a name to UTF-8. Without the UTF-8 flag, a Unicode path field that matches the stored
/// name wins; else the stored bytes are UTF-8 if they are valid, and otherwise code page 437.
/// Throws ZIPError (invalidName) when the flag is set and the bytes are not UTF-8.
std::string decodeZIPName(std::string_view stored, std::uint16_t flags, std::string_view extra);

/// Throws ZIPError with `name` unless every system can create an entry of that name below a folder.
/// A name that ends with "/" is a folder's.
void validateZIPName(std::string_view name);

/// The data of the extra field `id` in `extra`, a sequence of extra fields; empty when there is
/// none.
std::string_view zipExtraField(std::string_view extra, std::uint16_t id);

}  // namespace tavlen
