#include "tavlen/foundation/zip/detail/Deflater.h"

#include <zlib.h>

#include <cstddef>
#include <new>

namespace tavlen {

namespace {

constexpr int kFastest = 1;

/// By zlib, which unlike the faster library makes parts that can be joined.
std::string deflated(std::string_view bytes, int level, bool isLast) {
  z_stream stream{};
  constexpr int kRaw = -15;  // without a header; the largest window
  constexpr int kMemory = 8;
  if (deflateInit2(&stream, level, Z_DEFLATED, kRaw, kMemory, Z_DEFAULT_STRATEGY) != Z_OK)
    throw std::bad_alloc();
  const std::unique_ptr<z_stream, int (*)(z_stream*)> end(&stream, deflateEnd);
  constexpr std::size_t kFlush = 16;  // the empty block after which a part ends with a whole byte
  std::string out(deflateBound(&stream, bytes.size()) + kFlush, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  deflate(&stream, isLast ? Z_FINISH : Z_SYNC_FLUSH);
  out.resize(stream.total_out);
  return out;
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
  for (std::size_t i = 0; i < kPieces; ++i)
    sample += bytes.substr(bytes.size() / kPieces * i, kPiece);
  std::string out(sample.size() / 32 * 31, '\0');
  return libdeflate_deflate_compress(compressor_.get(), sample.data(), sample.size(), out.data(),
                                     out.size()) != 0;  // it fits
}

std::string Deflater::whole(std::string_view bytes) {
  if (!shrinks(bytes)) return deflated(bytes, Z_NO_COMPRESSION, true);
  std::string out(libdeflate_deflate_compress_bound(compressor_.get(), bytes.size()), '\0');
  out.resize(libdeflate_deflate_compress(compressor_.get(), bytes.data(), bytes.size(), out.data(),
                                         out.size()));
  return out;
}

std::string Deflater::block(std::string_view bytes, bool isLast) {
  return deflated(bytes, shrinks(bytes) ? kFastest : Z_NO_COMPRESSION, isLast);
}

}  // namespace tavlen
