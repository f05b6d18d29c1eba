#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tavlen {

/// Bytes of minimal Mach-O files, for tests.
namespace macho {

inline std::string word(std::uint32_t value) {
  std::string bytes;
  for (unsigned shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

inline std::string bigWord(std::uint32_t value) {
  const std::string bytes = word(value);
  return {bytes.rbegin(), bytes.rend()};
}

inline constexpr std::uint32_t kARM64 = 0x0100000C;

inline std::string thin(std::uint32_t fileType, std::uint32_t cpuType = kARM64,
                        std::uint32_t cpuSubtype = 0) {
  return word(0xFEEDFACF) + word(cpuType) + word(cpuSubtype) + word(fileType) +
         std::string(16, '\0');
}

inline std::string thin32(std::uint32_t fileType) {
  return word(0xFEEDFACE) + word(12) + word(9) + word(fileType) + std::string(12, '\0');
}

inline std::string fat(const std::vector<std::string>& slices) {
  std::string table = bigWord(0xCAFEBABE) + bigWord(static_cast<std::uint32_t>(slices.size()));
  std::string bodies;
  const std::size_t start = 8 + 20 * slices.size();
  for (const std::string& slice : slices) {
    table += bigWord(kARM64) + bigWord(0) +
             bigWord(static_cast<std::uint32_t>(start + bodies.size())) +
             bigWord(static_cast<std::uint32_t>(slice.size())) + bigWord(0);
    bodies += slice;
  }
  return table + bodies;
}

}  // namespace macho

}  // namespace tavlen
