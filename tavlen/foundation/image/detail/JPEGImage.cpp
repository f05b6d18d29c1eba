#include "tavlen/foundation/image/detail/JPEGImage.h"

// libjpeg's header wants these before it.
#include <csetjmp>
#include <cstddef>
#include <cstdio>
// clang-format off
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/image/detail/EXIFOrientation.h"

namespace tavlen {

namespace {

constexpr int kEXIFMarker = JPEG_APP0 + 1;
constexpr unsigned kLongestSegment = 0xFFFF;
/// Bytes of pixels that one byte of a file can make: its 8 bits are blocks of 8 x 8 samples, a
/// sample is stretched to 4 x 4 pixels at the most, and a pixel has 4 bytes.
constexpr std::size_t kMostPixelBytesPerByte = std::size_t{8} * 8 * 8 * 4 * 4 * 4;

/// One decoding, and the place to which libjpeg jumps when it fails. libjpeg's error handler must
/// not return, and an exception must not cross its C frames, so it jumps, and only over those. All
/// state is kept here, where the jump cannot change it.
struct Decoding {
  jpeg_decompress_struct info{};
  jpeg_error_mgr errors{};
  jpeg_progress_mgr progress{};
  std::jmp_buf failure{};
  std::vector<std::uint8_t> pixels;
  EXIFOrientation orientation = EXIFOrientation::upright;
};

Decoding& decodingOf(j_common_ptr info) { return *static_cast<Decoding*>(info->client_data); }

[[noreturn]] void giveUp(j_common_ptr info) {
  std::longjmp(decodingOf(info).failure, 1);  // NOLINT(cert-err52-cpp): libjpeg's only way out
}

/// A warning (a negative level) means that the library made up data: the picture is damaged. The
/// exceptions below are about other things.
void judgeMessage(j_common_ptr info, int level) {
  if (level >= 0) return;
  switch (info->err->msg_code) {
    case JWRN_ADOBE_XFORM:
    case JWRN_BOGUS_ICC:
    case JWRN_EXTRANEOUS_DATA:
    case JWRN_JFIF_MAJOR:
      return;
    default:
      giveUp(info);
  }
}

void printNothing(j_common_ptr /*info*/) {}

void countScans(j_common_ptr info) {
  if (decodingOf(info).info.input_scan_number > limits::kJPEGScans) giveUp(info);
}

void prepare(Decoding& decoding) {
  decoding.info.client_data = &decoding;
  decoding.info.err = ::jpeg_std_error(&decoding.errors);
  decoding.errors.error_exit = giveUp;
  decoding.errors.emit_message = judgeMessage;
  decoding.errors.output_message = printNothing;
  decoding.progress.progress_monitor = countScans;
}

/// The orientation that the first segment with one tells.
EXIFOrientation orientationOf(const jpeg_decompress_struct& info) {
  for (const auto* segment = info.marker_list; segment != nullptr; segment = segment->next) {
    const EXIFOrientation orientation =
        exifOrientation({reinterpret_cast<const char*>(segment->data), segment->data_length});
    if (orientation != EXIFOrientation::upright) return orientation;
  }
  return EXIFOrientation::upright;
}

/// Whether `bytes` become rows of `decoding.pixels`, four samples a pixel. No object with a
/// destructor may live in here, and what is called only allocates before libjpeg is entered.
bool readRows(Decoding& decoding, std::string_view bytes) {
  jpeg_decompress_struct& info = decoding.info;
  if (setjmp(decoding.failure) != 0) return false;  // NOLINT(cert-err52-cpp): see above
  jpeg_create_decompress(&info);
  info.progress = &decoding.progress;
  info.mem->max_memory_to_use = static_cast<long>(limits::kJPEGMemory);
  ::jpeg_save_markers(&info, kEXIFMarker, kLongestSegment);
  ::jpeg_mem_src(&info, reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  ::jpeg_read_header(&info, TRUE);
  if (!Image::isPossibleSize(info.image_width, info.image_height)) return false;
  decoding.orientation = orientationOf(info);  // libjpeg drops the segments at the end
  info.out_color_space = info.num_components == 4 ? JCS_CMYK : JCS_EXT_RGBA;
  ::jpeg_start_decompress(&info);
  const std::size_t rowSize = std::size_t{info.output_width} * 4;
  const std::size_t plausible = bytes.size() * kMostPixelBytesPerByte;
  // In arithmetic coding, libjpeg takes missing data for zeros: a few bytes would make a picture of
  // any size.
  if (info.arith_code != FALSE && rowSize * info.output_height > plausible) return false;
  decoding.pixels.reserve(std::min(rowSize * info.output_height, plausible));
  while (info.output_scanline < info.output_height) {
    decoding.pixels.resize(rowSize * (info.output_scanline + 1));
    JSAMPROW row = decoding.pixels.data() + rowSize * info.output_scanline;
    ::jpeg_read_scanlines(&info, &row, 1);
  }
  ::jpeg_finish_decompress(&info);
  return true;
}

/// Turns inks into light. The program that most such files come from stores inks inverted, and
/// marks its files.
void convertInks(std::vector<std::uint8_t>& pixels, bool isInverted) {
  constexpr unsigned kOpaque = 255;
  const auto light = [isInverted](std::uint8_t ink) {
    return isInverted ? ink : static_cast<std::uint8_t>(kOpaque - ink);
  };
  for (std::size_t i = 0; i < pixels.size(); i += 4) {
    const unsigned black = light(pixels[i + 3]);
    for (std::size_t channel = i; channel < i + 3; ++channel) {
      const unsigned product = light(pixels[channel]) * black;
      pixels[channel] = static_cast<std::uint8_t>((product + kOpaque / 2) / kOpaque);
    }
    pixels[i + 3] = kOpaque;
  }
}

}  // namespace

bool isJPEG(std::string_view bytes) { return bytes.starts_with("\xFF\xD8\xFF"); }

std::optional<Image> decodeJPEG(std::string_view bytes) {
  struct Guarded : Decoding {
    Guarded() { prepare(*this); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;
    ~Guarded() { ::jpeg_destroy_decompress(&info); }
  };
  Guarded decoding;
  if (!readRows(decoding, bytes)) return std::nullopt;
  if (decoding.info.out_color_space == JCS_CMYK) {
    convertInks(decoding.pixels, decoding.info.saw_Adobe_marker != FALSE);
  }
  const jpeg_decompress_struct& info = decoding.info;
  return shownUpright(Image(info.output_width, info.output_height, std::move(decoding.pixels)),
                      decoding.orientation);
}

}  // namespace tavlen
