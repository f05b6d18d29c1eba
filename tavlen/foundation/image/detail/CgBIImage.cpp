#include "tavlen/foundation/image/detail/CgBIImage.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/image/detail/PNGChunks.h"
#include "tavlen/foundation/image/detail/PNGHeader.h"
#include "tavlen/foundation/image/detail/PNGImage.h"

namespace tavlen {

namespace {

/// What the decoding needs of the file.
struct CgBIFile {
  std::string_view headerContents;
  PNGHeader header;
  std::string_view palette;       ///< empty when there is none
  std::string_view transparency;  ///< empty when there is none
  std::string compressed;         ///< the raw deflate stream
};

std::optional<CgBIFile> parse(std::string_view bytes) {
  CgBIFile file;
  PNGChunks chunks(bytes);
  chunks.next();  // CgBI
  const std::optional<PNGChunk> first = chunks.next();
  if (!first || first->type != "IHDR") return std::nullopt;
  const std::optional<PNGHeader> header = PNGHeader::parse(first->contents);
  if (!header) return std::nullopt;
  file.headerContents = first->contents;
  file.header = *header;
  while (const std::optional<PNGChunk> chunk = chunks.next()) {
    if (chunk->type == "IEND") return file;
    if (chunk->type == "PLTE") file.palette = chunk->contents;
    if (chunk->type == "tRNS") file.transparency = chunk->contents;
    if (chunk->type == "IDAT") file.compressed += chunk->contents;
  }
  return std::nullopt;
}

/// Inflates a raw stream in pieces that nobody keeps, for what zlib's own form says of it.
class RawInflation {
 public:
  RawInflation() : isReady_(::inflateInit2(&stream_, -MAX_WBITS) == Z_OK) {}
  RawInflation(const RawInflation&) = delete;
  RawInflation& operator=(const RawInflation&) = delete;
  ~RawInflation() {
    if (isReady_) ::inflateEnd(&stream_);
  }

  /// Goes through `compressed`, which may have bytes behind its end. False for a damaged stream and
  /// for one that holds more than `most` bytes.
  bool run(std::string& compressed, std::uint64_t most) {
    if (!isReady_ || compressed.size() > std::numeric_limits<uInt>::max()) return false;
    stream_.next_in = reinterpret_cast<Bytef*>(compressed.data());
    stream_.avail_in = static_cast<uInt>(compressed.size());
    std::array<Bytef, 32'768> piece;
    std::uint64_t size = 0;
    for (int result = Z_OK; result != Z_STREAM_END;) {
      stream_.next_out = piece.data();
      stream_.avail_out = piece.size();
      result = ::inflate(&stream_, Z_NO_FLUSH);
      if (result != Z_OK && result != Z_STREAM_END) return false;
      const std::size_t count = piece.size() - stream_.avail_out;
      checksum_ = ::adler32(checksum_, piece.data(), static_cast<uInt>(count));
      size += count;
      if (size > most) return false;
    }
    used_ = compressed.size() - stream_.avail_in;
    return true;
  }

  std::uint32_t checksum() const { return static_cast<std::uint32_t>(checksum_); }
  std::size_t used() const { return used_; }

 private:
  z_stream stream_{};
  bool isReady_;
  uLong checksum_ = 1;
  std::size_t used_ = 0;
};

/// The same picture as an ordinary PNG file. Colour spaces and texts stay behind: the samples are
/// undone afterwards, and must come out as they stand.
std::optional<std::string> rewrapped(CgBIFile file) {
  constexpr std::string_view kZlibHeader = "\x78\x01";
  RawInflation inflation;
  if (!inflation.run(file.compressed, file.header.filteredSize())) return std::nullopt;
  file.compressed.resize(inflation.used());
  file.compressed.insert(0, kZlibHeader);
  appendBigEndian32(file.compressed, inflation.checksum());

  std::string png(kPNGSignature);
  appendPNGChunk(png, "IHDR", file.headerContents);
  if (!file.palette.empty()) appendPNGChunk(png, "PLTE", file.palette);
  if (!file.transparency.empty()) appendPNGChunk(png, "tRNS", file.transparency);
  appendPNGChunk(png, "IDAT", file.compressed);
  appendPNGChunk(png, "IEND", "");
  return png;
}

std::uint8_t unpremultiplied(unsigned value, unsigned alpha) {
  constexpr unsigned kOpaque = 255;
  return static_cast<std::uint8_t>(std::min((value * kOpaque + alpha / 2) / alpha, kOpaque));
}

void restoreColors(std::vector<std::uint8_t>& pixels) {
  for (std::size_t i = 0; i < pixels.size(); i += 4) {
    std::swap(pixels[i], pixels[i + 2]);
    const std::uint8_t alpha = pixels[i + 3];
    if (alpha == 255) continue;
    for (std::size_t channel = i; channel < i + 3; ++channel) {
      pixels[channel] = alpha == 0 ? std::uint8_t{0} : unpremultiplied(pixels[channel], alpha);
    }
  }
}

}  // namespace

bool isCgBI(std::string_view bytes) {
  if (!bytes.starts_with(kPNGSignature)) return false;
  const std::optional<PNGChunk> first = PNGChunks(bytes).next();
  return first && first->type == "CgBI";
}

std::optional<Image> decodeCgBI(std::string_view bytes) {
  std::optional<CgBIFile> file = parse(bytes);
  if (!file) return std::nullopt;
  const PNGHeader header = file->header;
  const std::optional<std::string> png = rewrapped(std::move(*file));
  if (!png) return std::nullopt;
  std::vector<std::uint8_t> pixels = readPNGPixels(*png, header);
  if (pixels.empty()) return std::nullopt;
  // An index into a palette has no order of colours, and a palette is never premultiplied.
  if (header.colorType != PNGHeader::kIndexed) restoreColors(pixels);
  return Image(header.width, header.height, std::move(pixels));
}

}  // namespace tavlen
