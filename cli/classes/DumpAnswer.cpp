#include "cli/classes/DumpAnswer.h"

#include "tavlen/foundation/base/LittleEndian.h"

namespace tavlen::cli {

std::string DumpAnswer::written() const {
  constexpr unsigned kBitsOfByte = 8;
  std::string bytes(1, static_cast<char>(kind));
  for (std::size_t i = 0; i < sizeof(size); ++i) {
    bytes += static_cast<char>(size >> (kBitsOfByte * i) & 0xFFU);
  }
  return bytes;
}

DumpAnswer DumpAnswer::read(std::string_view bytes) {
  return {static_cast<Kind>(bytes[0]), littleEndian<std::uint64_t>(bytes, 1)};
}

}  // namespace tavlen::cli
