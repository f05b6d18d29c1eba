#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// The chunks that a PNG file consists of (ISO/IEC 15948, 5.3). Threads: any; one object one
/// thread at a time.
namespace tavlen {

/// The bytes that a file begins with.
inline constexpr std::string_view kPNGSignature{"\x89PNG\r\n\x1A\n", 8};

/// The first four bytes of `bytes`, which has them, as a number.
std::uint32_t bigEndian32(std::string_view bytes);
/// Appends `value` as four bytes.
void appendBigEndian32(std::string& bytes, std::uint32_t value);

/// A chunk, as views into the file.
struct PNGChunk {
  std::string_view type;
  std::string_view contents;
  std::string_view whole;  ///< with its length and checksum
};

/// Walks the chunks of a file in memory, which must live as long as the chunks do.
class PNGChunks {
 public:
  /// `file` begins with the signature.
  explicit PNGChunks(std::string_view file);

  /// The next chunk; nothing at the end, and for a chunk that is cut short or has a wrong checksum.
  std::optional<PNGChunk> next();

 private:
  std::string_view rest_;
};

/// Appends a chunk with its length and checksum.
void appendPNGChunk(std::string& file, std::string_view type, std::string_view contents);

}  // namespace tavlen
