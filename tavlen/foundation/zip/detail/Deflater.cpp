#include "tavlen/foundation/zip/detail/Deflater.h"

#include <zlib.h>

#include <cerrno>
#include <cstdint>
#include <new>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/base/SystemError.h"

namespace tavlen {

namespace {

constexpr int kFastest = 1;

/// Where the sample's piece of the `index`-th of equal sections begins in it. Follows only from the
/// numbers, but not from the data's own rhythm, such as that of pages.
std::size_t pieceOffset(std::size_t index, std::size_t size, std::size_t places) {
  const std::uint64_t mixed = (std::uint64_t{size} + index + 1) * 0x9E3779B97F4A7C15U;
  return static_cast<std::size_t>((mixed >> 32) % places);
}

}  // namespace

Deflater::Deflater() : compressor_(libdeflate_alloc_compressor(kFastest)) {
  if (compressor_ == nullptr) throw std::bad_alloc();
}

bool Deflater::shrinks(std::string_view bytes) {
  constexpr std::size_t kPieces = 16;
  constexpr std::size_t kPiece = std::size_t{4} << 10;
  if (bytes.size() < 4 * kPieces * kPiece) return true;  // a sample would cost as much
  std::string sample;
  const std::size_t section = bytes.size() / kPieces;
  for (std::size_t i = 0; i < kPieces; ++i) {
    const std::size_t offset = pieceOffset(i, bytes.size(), section - kPiece + 1);
    sample += bytes.substr(section * i + offset, kPiece);
  }
  const std::size_t limit = sample.size() / 32 * 31;
  return libdeflate_deflate_compress(compressor_.get(), sample.data(), sample.size(), room(limit),
                                     limit) != 0;  // it fits
}

std::string Deflater::deflated(std::string_view bytes, int level, bool isLast) {
  z_stream stream{};
  constexpr int kRaw = -15;  // without a header; the largest window
  constexpr int kMemory = 8;
  if (deflateInit2(&stream, level, Z_DEFLATED, kRaw, kMemory, Z_DEFAULT_STRATEGY) != Z_OK)
    throw std::bad_alloc();
  const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, deflateEnd);
  constexpr std::size_t kFlush = 16;  // the empty block after which a part ends with a whole byte
  const std::size_t most = deflateBound(&stream, bytes.size()) + kFlush;
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  // Stored blocks fill all of it, so they are made in their place.
  std::string stored(level == Z_NO_COMPRESSION ? most : 0, '\0');
  char* const out = stored.empty() ? room(most) : stored.data();
  stream.next_out = reinterpret_cast<Bytef*>(out);
  stream.avail_out = static_cast<uInt>(most);
  const int result = deflate(&stream, isLast ? Z_FINISH : Z_SYNC_FLUSH);
  // A flush is complete if there is room left.
  const bool isDone = isLast ? result == Z_STREAM_END : result == Z_OK && stream.avail_out > 0;
  if (!isDone || stream.avail_in > 0) throwSystemError(EIO, "zlib");
  if (stored.empty()) return {out, stream.total_out};
  stored.resize(stream.total_out);
  return stored;
}

char* Deflater::room(std::size_t count) {
  if (buffer_.size() < count) {
    buffer_ = std::vector<char>();  // before the larger one is there
    buffer_.resize(count);
  }
  return buffer_.data();
}

std::string Deflater::whole(std::string_view bytes) {
  if (!shrinks(bytes)) return deflated(bytes, Z_NO_COMPRESSION, true);
  const std::size_t most = libdeflate_deflate_compress_bound(compressor_.get(), bytes.size());
  char* const out = room(most);
  const std::size_t size =
      libdeflate_deflate_compress(compressor_.get(), bytes.data(), bytes.size(), out, most);
  if (size == 0) throwSystemError(EIO, "libdeflate");
  // Files that repeat themselves shrink less with zlib, so fewer archives of them reach the limit.
  if (bytes.size() / size > limits::kArchiveRatio / 2) return deflated(bytes, kFastest, true);
  return {out, size};
}

std::string Deflater::block(std::string_view bytes, bool isLast) {
  return deflated(bytes, shrinks(bytes) ? kFastest : Z_NO_COMPRESSION, isLast);
}

}  // namespace tavlen
