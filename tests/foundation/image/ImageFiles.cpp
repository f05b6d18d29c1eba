#include "tests/foundation/image/ImageFiles.h"

#include <zlib.h>

#include <cstdio>
#include <cstdlib>
// libjpeg's header wants the ones above before it.
#include <jpeglib.h>

namespace tavlen {

namespace {

std::string bigEndian(std::uint64_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFF);
  return bytes;
}

std::string chunk(const std::string& type, const std::string& contents) {
  const std::string body = type + contents;
  const auto* bytes = reinterpret_cast<const Bytef*>(body.data());
  return bigEndian(contents.size()) + body +
         bigEndian(crc32(0, bytes, static_cast<uInt>(body.size())));
}

std::string deflated(std::string rows, bool isRaw) {
  z_stream stream{};
  deflateInit2(&stream, 9, Z_DEFLATED, isRaw ? -MAX_WBITS : MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
  std::string bytes(deflateBound(&stream, rows.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(rows.data());
  stream.avail_in = static_cast<uInt>(rows.size());
  stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
  stream.avail_out = static_cast<uInt>(bytes.size());
  deflate(&stream, Z_FINISH);
  bytes.resize(stream.total_out);
  deflateEnd(&stream);
  return bytes;
}

std::vector<jpeg_scan_info> manyScans(std::size_t count) {
  std::vector<jpeg_scan_info> scans = {{1, {0}, 0, 0, 0, 0}};
  for (const auto& [high, low] : {std::pair(0, 1), std::pair(1, 0)}) {
    for (int i = 1; i < 64; ++i) scans.push_back({1, {0}, i, i, high, low});
  }
  scans.resize(count);
  return scans;
}

}  // namespace

std::string pngFile(const PNGParts& parts) {
  std::string header = bigEndian(parts.width) + bigEndian(parts.height);
  for (const int field : {parts.bitDepth, parts.colorType, 0, 0, parts.isInterlaced ? 1 : 0}) {
    header += static_cast<char>(field);
  }
  std::string file = "\x89PNG\r\n\x1A\n";
  if (parts.isCgBI) file += chunk("CgBI", std::string("\x50\x00\x20\x02", 4));
  file += chunk("IHDR", header);
  if (!parts.palette.empty()) file += chunk("PLTE", parts.palette);
  if (!parts.transparency.empty()) file += chunk("tRNS", parts.transparency);
  const std::string data = deflated(parts.rows, parts.isCgBI) + parts.trailing;
  const std::size_t half = parts.isCgBI ? data.size() / 2 : 0;
  if (half > 0) file += chunk("IDAT", data.substr(0, half));
  return file + chunk("IDAT", data.substr(half)) + chunk("IEND", "");
}

std::string unfiltered(std::string_view samples, std::size_t rowSize) {
  std::string rows;
  for (; !samples.empty(); samples.remove_prefix(rowSize)) {
    rows += '\0';
    rows += samples.substr(0, rowSize);
  }
  return rows;
}

std::string jpegFile(std::uint32_t width, std::uint32_t height, const std::string& samples,
                     const JPEGOptions& options) {
  jpeg_compress_struct info{};
  jpeg_error_mgr errors{};
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &bytes, &size);
  info.image_width = width;
  info.image_height = height;
  info.input_components = options.channels;
  info.in_color_space = options.channels == 1   ? JCS_GRAYSCALE
                        : options.channels == 3 ? JCS_RGB
                                                : JCS_CMYK;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, 100, TRUE);
  info.arith_code = options.isArithmetic ? TRUE : FALSE;
  const std::vector<jpeg_scan_info> scans = manyScans(options.scans);
  if (options.isProgressive) jpeg_simple_progression(&info);
  if (options.scans > 0) {
    info.scan_info = scans.data();
    info.num_scans = static_cast<int>(scans.size());
  }
  jpeg_start_compress(&info, TRUE);
  std::string row;
  while (info.next_scanline < height) {
    const std::size_t rowSize = std::size_t{width} * static_cast<std::size_t>(options.channels);
    row = samples.substr(info.next_scanline * rowSize, rowSize);
    auto* pointer = reinterpret_cast<JSAMPLE*>(row.data());
    jpeg_write_scanlines(&info, &pointer, 1);
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  std::string file(reinterpret_cast<const char*>(bytes), size);
  std::free(bytes);
  return file;
}

}  // namespace tavlen
