#include "tavlen/foundation/image/detail/PNGImage.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#include "tavlen/foundation/image/detail/PNGChunks.h"
#include "tavlen/foundation/image/detail/PNGHeader.h"

namespace tavlen {

namespace {

/// What a decoding needs of a file: views into it.
struct PNGFile {
  bool isCgBI = false;
  PNGHeader header;
  std::vector<PNGChunk> chunks;  ///< those that libpng is given, in their order
};

/// Texts, colour profiles and what else may be compressed in a file cost time and change nothing.
bool isNeeded(std::string_view type, bool isCgBI) {
  constexpr std::array<std::string_view, 4> kAlways = {"IHDR", "PLTE", "tRNS", "IDAT"};
  // In the device's form the samples are restored afterwards, and must come out as they are.
  constexpr std::array<std::string_view, 2> kGamma = {"gAMA", "sRGB"};
  const auto holds = [type](const auto& types) {
    return std::find(types.begin(), types.end(), type) != types.end();
  };
  return holds(kAlways) || (!isCgBI && holds(kGamma));
}

/// Nothing for a file that is damaged, and for one whose picture is too large.
std::optional<PNGFile> parse(std::string_view bytes) {
  PNGFile file;
  PNGChunks chunks(bytes);
  std::optional<PNGChunk> chunk = chunks.next();
  file.isCgBI = chunk && chunk->type == "CgBI";
  if (file.isCgBI) chunk = chunks.next();
  if (!chunk || chunk->type != "IHDR") return std::nullopt;
  const std::optional<PNGHeader> header = PNGHeader::parse(chunk->contents);
  // Deflate makes nothing smaller than by this factor: a larger picture cannot be in the file, and
  // its memory is not asked for.
  constexpr std::uint64_t kLargestRatio = 1032;
  if (!header || header->filteredSize() / kLargestRatio > bytes.size()) return std::nullopt;
  file.header = *header;
  for (; chunk && chunk->type != "IEND"; chunk = chunks.next()) {
    if (isNeeded(chunk->type, file.isCgBI)) file.chunks.push_back(*chunk);
  }
  if (!chunk) return std::nullopt;
  return file;
}

/// One decoding, and the place to which libpng jumps when it fails. libpng's error handler must not
/// return, and an exception must not cross its C frames, so it jumps, and only over those. All
/// state is kept here, where the jump cannot change it.
class Decoding {
 public:
  explicit Decoding(const PNGFile& file)
      : file_(file), pixels_(std::size_t{file.header.width} * file.header.height * 4) {
    png_ = ::png_create_read_struct(PNG_LIBPNG_VER_STRING, this, giveUp, ignoreWarning);
    info_ = png_ == nullptr ? nullptr : ::png_create_info_struct(png_);
    if (info_ == nullptr) {
      ::png_destroy_read_struct(&png_, nullptr, nullptr);
      throw std::bad_alloc();
    }
  }
  Decoding(const Decoding&) = delete;
  Decoding& operator=(const Decoding&) = delete;
  ~Decoding() { ::png_destroy_read_struct(&png_, &info_, nullptr); }

  /// Whether the file has all rows, which are then in the pixels. No object with a destructor may
  /// live in here.
  bool run() {
    if (setjmp(failure_) != 0) return false;  // NOLINT(cert-err52-cpp): libpng's only way out
    ::png_set_progressive_read_fn(png_, this, prepareRows, takeRow, nullptr);
    ::png_set_user_limits(png_, Image::kLongestSide, Image::kLongestSide);
    // There is none in the device's form.
    if (file_.isCgBI) ::png_set_option(png_, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
    give(kPNGSignature);
    bool isFirstData = true;
    for (const PNGChunk& chunk : file_.chunks) {
      if (file_.isCgBI && isFirstData && chunk.type == "IDAT") give(zlibHeaderChunk());
      if (chunk.type == "IDAT") isFirstData = false;
      give(chunk.whole);
      if (isComplete_) return true;
    }
    return false;
  }

  std::vector<std::uint8_t>& pixels() { return pixels_; }

 private:
  static Decoding& of(png_structp png) { return *static_cast<Decoding*>(::png_get_error_ptr(png)); }

  [[noreturn]] static void giveUp(png_structp png, png_const_charp /*message*/) {
    std::longjmp(of(png).failure_, 1);  // NOLINT(cert-err52-cpp): see run()
  }

  static void ignoreWarning(png_structp /*png*/, png_const_charp /*message*/) {}

  /// Called before the first row: all forms become RGBA of 8 bits.
  static void prepareRows(png_structp png, png_infop info) {
    ::png_set_alpha_mode_fixed(png, PNG_ALPHA_PNG, PNG_DEFAULT_sRGB);
    ::png_set_expand(png);
    ::png_set_scale_16(png);
    ::png_set_gray_to_rgb(png);
    ::png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
    ::png_set_interlace_handling(png);
    ::png_read_update_info(png, info);
    if (::png_get_rowbytes(png, info) != std::size_t{of(png).file_.header.width} * 4) {
      ::png_error(png, "another form than the one asked for");
    }
  }

  /// Called for each row of each pass; `row` is null where the pass has none.
  static void takeRow(png_structp png, png_bytep row, png_uint_32 number, int pass) {
    constexpr int kLastPass = 6;
    Decoding& decoding = of(png);
    const PNGHeader& header = decoding.file_.header;
    std::uint8_t* const place = decoding.pixels_.data() + std::size_t{number} * header.width * 4;
    ::png_progressive_combine_row(png, place, row);
    decoding.isComplete_ =
        number + 1 == header.height && pass == (header.isInterlaced ? kLastPass : 0);
  }

  /// libpng takes what it is given as if it could change it, and does not.
  void give(std::string_view bytes) {
    auto* const data = reinterpret_cast<png_bytep>(const_cast<char*>(bytes.data()));
    ::png_process_data(png_, info_, data, bytes.size());
  }

  /// What the device's form leaves out before the compressed data.
  static std::string_view zlibHeaderChunk() {
    static const std::string chunk = [] {
      std::string made;
      appendPNGChunk(made, "IDAT", "\x78\x01");
      return made;
    }();
    return chunk;
  }

  const PNGFile& file_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  std::jmp_buf failure_{};
  std::vector<std::uint8_t> pixels_;
  bool isComplete_ = false;
};

std::uint8_t unpremultiplied(unsigned value, unsigned alpha) {
  constexpr unsigned kOpaque = 255;
  return static_cast<std::uint8_t>(std::min((value * kOpaque + alpha / 2) / alpha, kOpaque));
}

/// Undoes what the device's form does to colours.
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

/// The handle of libpng's simplified interface, with whatever it still holds.
class WritingHandle {
 public:
  WritingHandle() { image_.version = PNG_IMAGE_VERSION; }
  WritingHandle(const WritingHandle&) = delete;
  WritingHandle& operator=(const WritingHandle&) = delete;
  ~WritingHandle() { png_image_free(&image_); }

  png_image* get() { return &image_; }
  png_image* operator->() { return &image_; }

 private:
  png_image image_{};
};

}  // namespace

bool isPNG(std::string_view bytes) { return bytes.starts_with(kPNGSignature); }

std::optional<Image> decodePNG(std::string_view bytes) {
  const std::optional<PNGFile> file = parse(bytes);
  if (!file) return std::nullopt;
  Decoding decoding(*file);
  if (!decoding.run()) return std::nullopt;
  // An index into a palette has no order of colours, and a palette is never premultiplied.
  if (file->isCgBI && file->header.colorType != PNGHeader::kIndexed) {
    restoreColors(decoding.pixels());
  }
  return Image(file->header.width, file->header.height, std::move(decoding.pixels()));
}

std::string encodePNG(const Image& image) {
  WritingHandle handle;
  handle->width = image.width();
  handle->height = image.height();
  handle->format = PNG_FORMAT_RGBA;
  // One compression into room for the largest outcome, instead of a first one that only measures.
  std::string bytes(PNG_IMAGE_PNG_SIZE_MAX(*handle.get()), '\0');
  png_alloc_size_t size = bytes.size();
  // The pixels fit their size and the room is enough, so that only memory can be missing.
  if (png_image_write_to_memory(handle.get(), bytes.data(), &size, 0, image.pixels().data(), 0,
                                nullptr) == 0) {
    throw std::bad_alloc();
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace tavlen
