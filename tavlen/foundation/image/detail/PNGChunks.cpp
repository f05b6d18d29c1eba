#include "tavlen/foundation/image/detail/PNGChunks.h"

#include <zlib.h>

#include <algorithm>

namespace tavlen {

namespace {

constexpr std::size_t kLengthSize = 4;
constexpr std::size_t kTypeSize = 4;
constexpr std::size_t kChecksumSize = 4;
constexpr std::size_t kLongestChunk = (std::size_t{1} << 31) - 1;

/// The checksum of a chunk is over its type and its contents.
std::uint32_t checksumOf(std::string_view typeAndContents) {
  return static_cast<std::uint32_t>(::crc32(0,
                                            reinterpret_cast<const Bytef*>(typeAndContents.data()),
                                            static_cast<uInt>(typeAndContents.size())));
}

}  // namespace

std::uint32_t bigEndian32(std::string_view bytes) {
  std::uint32_t value = 0;
  for (const char byte : bytes.substr(0, 4)) value = value << 8 | static_cast<std::uint8_t>(byte);
  return value;
}

void appendBigEndian32(std::string& bytes, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes += static_cast<char>(static_cast<std::uint8_t>(value >> shift));
  }
}

PNGChunks::PNGChunks(std::string_view file)
    : rest_(file.substr(std::min(file.size(), kPNGSignature.size()))) {}

std::optional<PNGChunk> PNGChunks::next() {
  if (rest_.size() < kLengthSize + kTypeSize + kChecksumSize) return std::nullopt;
  const std::size_t length = bigEndian32(rest_);
  const std::string_view body = rest_.substr(kLengthSize);
  if (length > kLongestChunk || length > body.size() - kTypeSize - kChecksumSize) {
    return std::nullopt;
  }
  const std::string_view checked = body.substr(0, kTypeSize + length);
  if (bigEndian32(body.substr(checked.size())) != checksumOf(checked)) return std::nullopt;
  const std::string_view whole = rest_.substr(0, kLengthSize + checked.size() + kChecksumSize);
  rest_.remove_prefix(whole.size());
  return PNGChunk{checked.substr(0, kTypeSize), checked.substr(kTypeSize), whole};
}

void appendPNGChunk(std::string& file, std::string_view type, std::string_view contents) {
  appendBigEndian32(file, static_cast<std::uint32_t>(contents.size()));
  const std::size_t start = file.size();
  file += type;
  file += contents;
  appendBigEndian32(file, checksumOf(std::string_view(file).substr(start)));
}

}  // namespace tavlen
