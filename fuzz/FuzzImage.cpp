// Any image that can be read can be resized, and written so that it reads back as the same image.
// Memory and time stay in proportion to the file.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/Budget.h"
#include "tavlen/foundation/image/Image.h"
#include "tavlen/foundation/image/detail/PNGChunks.h"

using namespace tavlen;

namespace {

/// Writing larger images takes long and finds no more faults than small ones.
constexpr std::uint64_t kMostPixelsWritten = 1 << 14;
constexpr std::uint32_t kSmallWidth = 7;
constexpr std::uint32_t kSmallHeight = 9;

/// `file` with correct checksums of its chunks, which mutations would hardly ever produce.
std::string withChecksums(std::string_view file) {
  constexpr std::size_t kLengthAndType = 8;
  constexpr std::size_t kChecksum = 4;
  std::string repaired(file.substr(0, kPNGSignature.size()));
  file.remove_prefix(repaired.size());
  while (file.size() >= kLengthAndType) {
    const std::size_t length =
        std::min<std::size_t>(bigEndian32(file), file.size() - kLengthAndType);
    appendPNGChunk(repaired, file.substr(4, 4), file.substr(kLengthAndType, length));
    file.remove_prefix(std::min(kLengthAndType + length + kChecksum, file.size()));
  }
  return repaired;
}

void require(bool condition) {
  if (!condition) std::abort();
}

/// Deflate makes 1032 bytes of one, and one byte of black and white has 8 pixels of 4 bytes; a byte
/// of JPEG makes twice as much. A picture that is turned is there twice.
constexpr fuzz::Budget kBudget = {
    .bytesPerByte = 2 * 2 * 4 * 8 * 1032, .seconds = 4, .secondsPerByte = 5e-3};

void readAndWrite(std::string_view bytes) {
  std::optional<Image> image;
  fuzz::requireWithin(kBudget, bytes.size(), [&] { image = Image::decode(bytes); });
  if (!image) return;
  require(Image::isPossibleSize(image->width(), image->height()));
  if (std::uint64_t{image->width()} * image->height() > kMostPixelsWritten) return;
  require(Image::decode(image->pngData()) == image);
  require(image->resized(kSmallWidth, kSmallHeight).has_value());
  require(image->resized(image->width() * 2, 1).has_value() ||
          image->width() > Image::kLongestSide / 2);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  readAndWrite(bytes);
  if (bytes.starts_with(kPNGSignature)) readAndWrite(withChecksums(bytes));
  return 0;
}
