#include "tavlen/foundation/image/detail/PNGImage.h"

#include <png.h>

#include <new>
#include <utility>

#include "tavlen/foundation/image/detail/PNGChunks.h"

namespace tavlen {

namespace {

/// libpng's handle, with whatever it still holds.
class PNGHandle {
 public:
  PNGHandle() { image_.version = PNG_IMAGE_VERSION; }
  PNGHandle(const PNGHandle&) = delete;
  PNGHandle& operator=(const PNGHandle&) = delete;
  ~PNGHandle() { png_image_free(&image_); }

  png_image* get() { return &image_; }
  png_image* operator->() { return &image_; }

 private:
  png_image image_{};
};

}  // namespace

bool isPNG(std::string_view bytes) { return bytes.starts_with(kPNGSignature); }

std::vector<std::uint8_t> readPNGPixels(std::string_view bytes, const PNGHeader& header) {
  // Deflate makes nothing smaller than by this factor: a larger picture cannot be in the file, and
  // its memory is not asked for.
  constexpr std::uint64_t kLargestRatio = 1032;
  if (header.filteredSize() / kLargestRatio > bytes.size()) return {};
  PNGHandle handle;
  if (png_image_begin_read_from_memory(handle.get(), bytes.data(), bytes.size()) == 0) return {};
  if (handle->width != header.width || handle->height != header.height) return {};
  handle->format = PNG_FORMAT_RGBA;
  // Without it 16-bit samples in a file that names no colour space would be taken as linear.
  handle->flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
  std::vector<std::uint8_t> pixels(std::size_t{header.width} * header.height * 4);
  if (png_image_finish_read(handle.get(), nullptr, pixels.data(), 0, nullptr) == 0) return {};
  return pixels;
}

std::optional<Image> decodePNG(std::string_view bytes) {
  PNGChunks chunks(bytes);
  const std::optional<PNGChunk> first = chunks.next();
  // libpng is content once it has all pixels: a file that is cut behind them is damaged all the
  // same.
  if (!first || first->type != "IHDR" || !chunks.reachEnd()) return std::nullopt;
  const std::optional<PNGHeader> header = PNGHeader::parse(first->contents);
  if (!header) return std::nullopt;
  std::vector<std::uint8_t> pixels = readPNGPixels(bytes, *header);
  if (pixels.empty()) return std::nullopt;
  return Image(header->width, header->height, std::move(pixels));
}

std::string encodePNG(const Image& image) {
  PNGHandle handle;
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
