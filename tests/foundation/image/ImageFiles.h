#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen {

/// A PNG file to be put together by a test. The rows are as the format stores them: each begins
/// with its filter byte, all passes one behind the other.
struct PNGParts {
  std::uint32_t width = 1;
  std::uint32_t height = 1;
  int bitDepth = 8;
  int colorType = 6;
  bool isInterlaced = false;
  std::string rows = {};
  std::string palette = {};
  std::string transparency = {};
  /// Behind the compressed data, in the same chunk.
  std::string trailing = {};
  bool isCgBI = false;
};

/// The file; a CgBI one has its data in two chunks, as such files do.
std::string pngFile(const PNGParts& parts);

/// Rows of that many bytes, each behind a filter byte 0.
std::string unfiltered(std::string_view samples, std::size_t rowSize);

struct JPEGOptions {
  int channels = 3;  ///< 1 grey, 3 RGB, 4 inks
  bool isProgressive = false;
  /// Grey: so many scans, of one coefficient of the transformation each; the library's own where 0.
  std::size_t scans = 0;
  bool isArithmetic = false;
};

/// A file of best quality; `samples` are a byte a channel.
std::string jpegFile(std::uint32_t width, std::uint32_t height, const std::string& samples,
                     const JPEGOptions& options = {});

}  // namespace tavlen
