#include "tavlen/foundation/image/detail/PNGHeader.h"

#include <array>

#include "tavlen/foundation/image/Image.h"
#include "tavlen/foundation/image/detail/PNGChunks.h"

namespace tavlen {

namespace {

constexpr std::uint8_t kMostBits = 16;

bool isKnownDepth(std::uint8_t colorType, std::uint8_t bitDepth) {
  const bool isPowerOfTwo = bitDepth != 0 && (bitDepth & (bitDepth - 1)) == 0;
  switch (colorType) {
    case 0:
      return isPowerOfTwo && bitDepth <= kMostBits;
    case PNGHeader::kIndexed:
      return isPowerOfTwo && bitDepth <= 8;
    case PNGHeader::kRGB:
    case PNGHeader::kHasAlpha:
    case PNGHeader::kRGBA:
      return bitDepth == 8 || bitDepth == kMostBits;
    default:
      return false;
  }
}

std::uint64_t channelCount(std::uint8_t colorType) {
  if (colorType == PNGHeader::kIndexed) return 1;
  return ((colorType & PNGHeader::kHasColor) != 0 ? 3U : 1U) +
         ((colorType & PNGHeader::kHasAlpha) != 0 ? 1U : 0U);
}

/// The columns and rows that a pass of an interlaced picture has: every `step`th, from `first`.
struct Pass {
  std::uint32_t firstColumn, columnStep, firstRow, rowStep;
};

constexpr std::array<Pass, 7> kAdam7 = {{{0, 8, 0, 8},
                                         {4, 8, 0, 8},
                                         {0, 4, 4, 8},
                                         {2, 4, 0, 4},
                                         {0, 2, 2, 4},
                                         {1, 2, 0, 2},
                                         {0, 1, 1, 2}}};

constexpr std::uint64_t taken(std::uint64_t count, std::uint64_t first, std::uint64_t step) {
  return count > first ? (count - first + step - 1) / step : 0;
}

}  // namespace

std::optional<PNGHeader> PNGHeader::parse(std::string_view contents) {
  if (contents.size() != kSize) return std::nullopt;
  PNGHeader header;
  header.width = bigEndian32(contents.substr(0, 4));
  header.height = bigEndian32(contents.substr(4, 4));
  header.bitDepth = static_cast<std::uint8_t>(contents[8]);
  header.colorType = static_cast<std::uint8_t>(contents[9]);
  header.isInterlaced = contents[12] == 1;
  const bool isKnown = contents[10] == 0 && contents[11] == 0 &&
                       (contents[12] == 0 || contents[12] == 1) &&
                       isKnownDepth(header.colorType, header.bitDepth);
  if (!isKnown || !Image::isPossibleSize(header.width, header.height)) return std::nullopt;
  return header;
}

std::uint64_t PNGHeader::filteredSize() const {
  const auto sizeOf = [this](std::uint64_t columns, std::uint64_t rows) {
    const std::uint64_t bits = columns * channelCount(colorType) * bitDepth;
    return columns == 0 ? 0 : rows * (1 + (bits + 7) / 8);
  };
  if (!isInterlaced) return sizeOf(width, height);
  std::uint64_t size = 0;
  for (const Pass& pass : kAdam7) {
    size += sizeOf(taken(width, pass.firstColumn, pass.columnStep),
                   taken(height, pass.firstRow, pass.rowStep));
  }
  return size;
}

}  // namespace tavlen
