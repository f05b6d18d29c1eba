#include "tavlen/foundation/image/detail/EXIFOrientation.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace tavlen {

namespace {

using namespace std::string_view_literals;

/// The numbers of a TIFF file, in the byte order that its first two bytes tell.
class TIFFNumbers {
 public:
  explicit TIFFNumbers(std::string_view file)
      : file_(file), isBigEndian_(file.starts_with("MM\0*"sv)) {}

  bool isTIFF() const { return isBigEndian_ || file_.starts_with("II*\0"sv); }

  /// The number of `size` bytes at `place`; nothing where the file has none.
  std::optional<std::uint32_t> at(std::size_t place, std::size_t size) const {
    if (place > file_.size() || size > file_.size() - place) return std::nullopt;
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < size; ++i) {
      const char byte = file_[place + (isBigEndian_ ? i : size - 1 - i)];
      number = number << 8 | static_cast<std::uint8_t>(byte);
    }
    return number;
  }

 private:
  std::string_view file_;
  bool isBigEndian_;
};

/// The value of the orientation's tag in the first directory; nothing where it is missing.
std::optional<std::uint32_t> storedOrientation(const TIFFNumbers& numbers) {
  constexpr std::size_t kDirectoryOffset = 4;
  constexpr std::size_t kEntrySize = 12;
  constexpr std::uint32_t kOrientation = 0x0112;
  constexpr std::uint32_t kShort = 3;
  const auto directory = numbers.at(kDirectoryOffset, 4);
  const auto count = directory ? numbers.at(*directory, 2) : std::nullopt;
  if (!count) return std::nullopt;
  for (std::size_t i = 0; i < *count; ++i) {
    const std::size_t entry = std::size_t{*directory} + 2 + i * kEntrySize;
    const auto tag = numbers.at(entry, 2);
    if (!tag) break;  // the directory is cut short
    if (*tag != kOrientation) continue;
    if (numbers.at(entry + 2, 2) != kShort || numbers.at(entry + 4, 4) != 1U) break;
    return numbers.at(entry + 8, 2);
  }
  return std::nullopt;
}

/// Where the stored picture has the first pixel that is shown, and how far it is from there to the
/// next one in the same row, and to the first one of the next row.
struct Walk {
  std::ptrdiff_t first, column, row;
};

Walk walkOf(EXIFOrientation orientation, std::ptrdiff_t width, std::ptrdiff_t height) {
  const std::ptrdiff_t lastColumn = width - 1;
  const std::ptrdiff_t lastRow = (height - 1) * width;
  switch (orientation) {
    case EXIFOrientation::upright:
      break;
    case EXIFOrientation::mirrored:
      return {lastColumn, -1, width};
    case EXIFOrientation::upsideDown:
      return {lastRow + lastColumn, -1, -width};
    case EXIFOrientation::flipped:
      return {lastRow, 1, -width};
    case EXIFOrientation::transposed:
      return {0, width, 1};
    case EXIFOrientation::turnedLeft:
      return {lastRow, -width, 1};
    case EXIFOrientation::crossTransposed:
      return {lastRow + lastColumn, -width, -1};
    case EXIFOrientation::turnedRight:
      return {lastColumn, width, -1};
  }
  return {0, 1, width};
}

}  // namespace

EXIFOrientation exifOrientation(std::string_view segment) {
  constexpr std::string_view kMark = "Exif\0\0"sv;
  if (!segment.starts_with(kMark)) return EXIFOrientation::upright;
  const TIFFNumbers numbers(segment.substr(kMark.size()));
  if (!numbers.isTIFF()) return EXIFOrientation::upright;
  const std::uint32_t value = storedOrientation(numbers).value_or(1);
  return value >= 1 && value <= 8 ? static_cast<EXIFOrientation>(value) : EXIFOrientation::upright;
}

Image shownUpright(Image image, EXIFOrientation orientation) {
  if (orientation == EXIFOrientation::upright) return image;
  std::uint32_t width = image.width();
  std::uint32_t height = image.height();
  const Walk walk = walkOf(orientation, width, height);
  if (orientation >= EXIFOrientation::transposed) std::swap(width, height);
  std::vector<std::uint8_t> pixels(image.pixels().size());
  auto place = pixels.begin();
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    for (std::ptrdiff_t x = 0; x < width; ++x) {
      const std::ptrdiff_t pixel = walk.first + x * walk.column + y * walk.row;
      place = std::copy_n(image.pixels().begin() + pixel * 4, 4, place);
    }
  }
  return Image(width, height, std::move(pixels));
}

}  // namespace tavlen
