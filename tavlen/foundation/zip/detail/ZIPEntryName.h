#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The name of one entry of a ZIP archive by itself (APPNOTE.TXT 4.4.17, 4.6.9, appendix D).
/// Threads: any.
namespace tavlen {

/// The name as UTF-8. Where the entry's flags do not say that it is stored so, it is the one of the
/// Unicode path field, if there is one that belongs to it; else the stored bytes, taken for code
/// page 437 where they are not UTF-8. Throws ZIPError (invalidName) for what is said to be UTF-8
/// and is not.
std::string decodeZIPName(std::string_view stored, std::uint16_t flags, std::string_view extra);

/// Refuses (ZIPError, with `name` as it is) what cannot be an entry below a folder, on any system.
/// A name with "/" at its end is a folder's.
void judgeZIPName(std::string_view name);

/// The data of the extra field `id` in `extra`, the list of them; empty where there is none.
std::string_view zipExtraField(std::string_view extra, std::uint16_t id);

}  // namespace tavlen
