#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavlen {

/// The supported compression methods: stored.
inline constexpr std::uint16_t kZIPStored = 0;
/// Deflated.
inline constexpr std::uint16_t kZIPDeflated = 8;

/// An entry of the central directory (APPNOTE.TXT 4.3.12).
struct ZIPEntry {
  std::string name;  ///< UTF-8; a folder's ends with "/"
  std::uint16_t flags = 0;
  std::uint16_t method = 0;
  std::uint32_t checksum = 0;
  std::uint64_t compressedSize = 0;
  std::uint64_t size = 0;
  std::uint64_t offset = 0;  ///< of the local record, in bytes
  std::uint32_t mode = 0;    ///< as in stat(); 0 when the archive does not store it

  bool isFolder() const { return name.ends_with('/'); }
  /// Whether the entry is `top`, an entry at the top of the archive, or lies below it. Always true
  /// when `top` is empty.
  bool isWithin(std::string_view top) const {
    return top.empty() ||
           (name.starts_with(top) && (name.size() == top.size() || name[top.size()] == '/'));
  }
};

}  // namespace tavlen
