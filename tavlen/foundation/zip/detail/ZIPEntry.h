#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavlen {

/// The methods that are read.
inline constexpr std::uint16_t kZIPStored = 0;
inline constexpr std::uint16_t kZIPDeflated = 8;

/// What the directory of a ZIP archive says of an entry (APPNOTE.TXT 4.3.12).
struct ZIPEntry {
  std::string name;  ///< UTF-8, a folder's with "/" at its end
  std::uint16_t flags = 0;
  std::uint16_t method = 0;
  std::uint32_t checksum = 0;
  std::uint64_t compressedSize = 0;
  std::uint64_t size = 0;
  std::uint64_t offset = 0;  ///< of the local record
  std::uint32_t mode = 0;    ///< as stat() tells it; 0 where the archive does not

  bool isFolder() const { return name.ends_with('/'); }
  /// Whether it is `top`, an entry at the top, or lies in it. Everything is where that is empty.
  bool isWithin(std::string_view top) const {
    return top.empty() ||
           (name.starts_with(top) && (name.size() == top.size() || name[top.size()] == '/'));
  }
};

}  // namespace tavlen
