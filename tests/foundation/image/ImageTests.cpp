#include "tavlen/foundation/image/Image.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <random>

#include "tests/foundation/image/ImageFiles.h"

namespace tavlen {
namespace {

using namespace std::string_literals;
using Pixels = std::vector<std::uint8_t>;

Pixels decodedPixels(const std::string& file) {
  const std::optional<Image> image = Image::decode(file);
  return image ? image->pixels() : Pixels();
}

std::string textOf(const Pixels& bytes) { return {bytes.begin(), bytes.end()}; }

unsigned premultiplied(unsigned value, unsigned alpha) { return (value * alpha + 127) / 255; }

Image noise(std::uint32_t width, std::uint32_t height) {
  std::mt19937 random(7);
  Pixels pixels(std::size_t{width} * height * 4);
  for (std::uint8_t& byte : pixels) byte = static_cast<std::uint8_t>(random());
  return {width, height, pixels};
}

/// The library must not write to the process's error stream, whatever it is given.
class ImageTest : public testing::Test {
 protected:
  void SetUp() override { testing::internal::CaptureStderr(); }
  void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); }
};

TEST_F(ImageTest, PNGKeepsEveryPixel) {
  for (const auto& [width, height] :
       {std::pair(1U, 1U), std::pair(300U, 7U), std::pair(1U, Image::kLongestSide)}) {
    const Image image = noise(width, height);
    EXPECT_EQ(Image::decode(image.pngData()), image);
  }
}

TEST_F(ImageTest, CgBIColorsAreRestoredForEveryAlpha) {
  // A row an alpha; in it every premultiplied value as blue, beside fixed green and red.
  std::string samples;
  for (unsigned alpha = 0; alpha < 256; ++alpha) {
    for (unsigned blue = 0; blue <= alpha; ++blue) {
      for (const unsigned byte : {blue, alpha / 2, alpha, alpha})
        samples += static_cast<char>(byte);
    }
    samples.resize((alpha + 1) * 256 * 4);
  }
  const Pixels pixels = decodedPixels(
      pngFile({.width = 256, .height = 256, .rows = unfiltered(samples, 1024), .isCgBI = true}));
  ASSERT_EQ(pixels.size(), samples.size());
  for (unsigned alpha = 0; alpha < 256; ++alpha) {
    for (unsigned blue = 0; blue <= alpha; ++blue) {
      const std::uint8_t* pixel = &pixels[(alpha * 256 + blue) * 4];
      EXPECT_EQ(pixel[3], alpha);
      EXPECT_EQ(pixel[0], alpha == 0 ? 0 : 255);
      EXPECT_EQ(premultiplied(pixel[1], alpha), alpha / 2);
      EXPECT_EQ(premultiplied(pixel[2], alpha), blue);
    }
  }
}

/// A form of PNG, a picture of random samples in it, and the pixels that they stand for.
class SampledPNG {
 public:
  SampledPNG(PNGParts parts, bool isKeyed) : parts_(std::move(parts)), isKeyed_(isKeyed) {
    const std::size_t channels =
        std::array<std::size_t, 7>{1, 0, 3, 1, 2, 0, 4}.at(std::size_t(parts_.colorType));
    const auto hasAlpha = (parts_.colorType & 4) != 0;
    for (std::size_t i = 0; i < std::size_t{parts_.width} * parts_.height; ++i) {
      std::vector<unsigned> pixel(channels);
      for (unsigned& sample : pixel) sample = static_cast<unsigned>(random_()) & most();
      // What lies between is a test of its own, as the device's form multiplies by it.
      if (hasAlpha) pixel.back() = (pixel.back() & 1) * most();
      samples_.push_back(pixel);
    }
    if (parts_.colorType == 3) {
      for (unsigned i = 0; i < 3 * (most() + 1); ++i)
        parts_.palette += static_cast<char>(random_());
    }
    if (isKeyed_) parts_.transparency = transparency();
    storeRows();
  }

  const PNGParts& parts() const { return parts_; }

  Pixels pixels() const {
    Pixels pixels;
    for (const auto& sample : samples_) {
      std::array<std::uint8_t, 4> pixel = {0, 0, 0, 255};
      if (parts_.colorType == 3) {
        for (std::size_t i = 0; i < 3; ++i)
          pixel[i] = std::uint8_t(parts_.palette[sample[0] * 3 + i]);
        if (isKeyed_ && sample[0] == 0) pixel[3] = 77;
      } else {
        const bool isColor = (parts_.colorType & 2) != 0;
        for (std::size_t i = 0; i < 3; ++i) pixel[i] = eightBits(sample[isColor ? i : 0]);
        if ((parts_.colorType & 4) != 0) pixel[3] = eightBits(sample.back());
        if (isKeyed_ && sample == samples_[0]) pixel[3] = 0;
        if (parts_.isCgBI) {
          std::swap(pixel[0], pixel[2]);
          if (pixel[3] == 0) pixel = {};
        }
      }
      pixels.insert(pixels.end(), pixel.begin(), pixel.end());
    }
    return pixels;
  }

 private:
  unsigned most() const { return (1U << parts_.bitDepth) - 1; }
  std::uint8_t eightBits(unsigned sample) const {
    return static_cast<std::uint8_t>(std::lround(sample * 255.0 / most()));
  }

  /// Of the palette's first colour, or the first pixel's colour as the one that is not seen.
  std::string transparency() const {
    if (parts_.colorType == 3) return "\x4D";
    std::string key;
    for (const unsigned sample : samples_[0]) {
      key += static_cast<char>(sample >> 8);
      key += static_cast<char>(sample);
    }
    return key;
  }

  void storeRows() {
    constexpr std::uint32_t kPasses[7][4] = {{0, 8, 0, 8}, {4, 8, 0, 8}, {0, 4, 4, 8}, {2, 4, 0, 4},
                                             {0, 2, 2, 4}, {1, 2, 0, 2}, {0, 1, 1, 2}};
    if (!parts_.isInterlaced) return storePass(0, 1, 0, 1);
    for (const auto& pass : kPasses) storePass(pass[0], pass[1], pass[2], pass[3]);
  }

  void storePass(std::uint32_t left, std::uint32_t columnStep, std::uint32_t top,
                 std::uint32_t rowStep) {
    for (std::uint32_t y = top; y < parts_.height && left < parts_.width; y += rowStep) {
      parts_.rows += '\0';
      unsigned bits = 0;
      int count = 0;
      for (std::uint32_t x = left; x < parts_.width; x += columnStep) {
        for (const unsigned sample : samples_[y * parts_.width + x]) {
          bits = bits << parts_.bitDepth | sample;
          for (count += parts_.bitDepth; count >= 8; count -= 8) {
            parts_.rows += static_cast<char>(bits >> (count - 8));
          }
        }
      }
      if (count > 0) parts_.rows += static_cast<char>(bits << (8 - count));
    }
  }

  PNGParts parts_;
  bool isKeyed_;
  std::mt19937 random_{7};
  std::vector<std::vector<unsigned>> samples_;  ///< a pixel's, row by row
};

TEST_F(ImageTest, EveryFormOfPNGHasItsPixels) {
  const std::pair<int, std::vector<int>> depths[] = {
      {0, {1, 2, 4, 8, 16}}, {2, {8, 16}}, {3, {1, 2, 4, 8}}, {4, {8, 16}}, {6, {8, 16}}};
  const std::pair<std::uint32_t, std::uint32_t> sizes[] = {
      {1, 1}, {2, 1}, {1, 9}, {3, 5}, {21, 19}};
  for (const auto& [colorType, bitDepths] : depths) {
    for (const int bitDepth : bitDepths) {
      for (const auto& [width, height] : sizes) {
        for (unsigned flags = 0; flags < 8; ++flags) {
          const bool isKeyed = (flags & 4) != 0;
          if (isKeyed && colorType >= 4) continue;
          const SampledPNG png({.width = width,
                                .height = height,
                                .bitDepth = bitDepth,
                                .colorType = colorType,
                                .isInterlaced = (flags & 1) != 0,
                                .isCgBI = (flags & 2) != 0},
                               isKeyed);
          SCOPED_TRACE(testing::Message() << colorType << ' ' << bitDepth << " bits, " << width
                                          << 'x' << height << ", flags " << flags);
          EXPECT_EQ(decodedPixels(pngFile(png.parts())), png.pixels());
          PNGParts longer = png.parts();
          longer.rows.append(100'000, '\x55');
          EXPECT_EQ(decodedPixels(pngFile(longer)), png.pixels());
          PNGParts shorter = png.parts();
          shorter.rows.pop_back();
          EXPECT_EQ(Image::decode(pngFile(shorter)), std::nullopt);
        }
      }
    }
  }
}

TEST_F(ImageTest, CgBIColorsBeyondTheirAlphaAndDataAfterTheStream) {
  EXPECT_EQ(decodedPixels(pngFile({.rows = "\0\xFF\x81\x80\x80"s, .isCgBI = true})),
            (Pixels{255, 255, 255, 128}));
  EXPECT_EQ(decodedPixels(pngFile({.rows = "\0\1\2\3\xFF"s, .trailing = "junk", .isCgBI = true})),
            (Pixels{3, 2, 1, 255}));
}

TEST_F(ImageTest, JPEGOfAllColorSpaces) {
  const struct {
    JPEGOptions options;
    std::string sample;
    Pixels color;
  } rows[] = {
      {{.channels = 1}, "\x64", {100, 100, 100, 255}},
      {{.channels = 3}, "\xC8\x64\x32", {200, 100, 50, 255}},
      {{.channels = 3, .isProgressive = true}, "\xC8\x64\x32", {200, 100, 50, 255}},
      {{.channels = 3, .isArithmetic = true}, "\xC8\x64\x32", {200, 100, 50, 255}},
      {{.channels = 4}, "\xFF\x80\x40\x80", {128, 64, 32, 255}},  // stored inverted, and marked
  };
  for (const auto& [options, sample, color] : rows) {
    std::string samples;
    for (int i = 0; i < 17 * 9; ++i) samples += sample;
    const std::optional<Image> image = Image::decode(jpegFile(17, 9, samples, options));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width(), 17U);
    EXPECT_EQ(image->height(), 9U);
    for (std::size_t i = 0; i < image->pixels().size(); ++i) {
      EXPECT_NEAR(image->pixels()[i], color[i % 4], 2);
    }
  }
}

/// An APP1 segment that tells `orientation`, cut off after `size` bytes of its contents.
std::string exifSegment(unsigned orientation, bool isBigEndian, std::size_t size = 1000) {
  const std::string little = "\x12\1\3\0\1\0\0\0"s + static_cast<char>(orientation) + "\0\0\0"s;
  const std::string big = "\1\x12\0\3\0\0\0\1\0"s + static_cast<char>(orientation) + "\0\0"s;
  // A directory of two entries at byte 10.
  std::string contents =
      isBigEndian ? "Exif\0\0MM\0*\0\0\0\x0A??\0\2"s : "Exif\0\0II*\0\x0A\0\0\0??\2\0"s;
  contents += std::string(12, '\1') + (isBigEndian ? big : little);
  contents.resize(std::min(size, contents.size()));
  return "\xFF\xE1\0"s + static_cast<char>(contents.size() + 2) + contents;
}

TEST_F(ImageTest, JPEGIsShownAsItsOrientationSays) {
  constexpr std::uint32_t kBlock = 8;  // of one brightness, which the coding keeps
  std::string samples;
  for (std::uint32_t y = 0; y < 3 * kBlock; ++y) {
    for (std::uint32_t x = 0; x < 2 * kBlock; ++x) {
      samples += static_cast<char>(40 * (y / kBlock * 2 + x / kBlock));
    }
  }
  const std::string plain = jpegFile(2 * kBlock, 3 * kBlock, samples, {.channels = 1});
  const auto shown = [&](const std::string& segment) {
    const Image image = Image::decode(plain.substr(0, 2) + segment + plain.substr(2)).value();
    std::string text;  // the blocks' numbers, row by row
    for (std::uint32_t y = 0; y < image.height(); y += kBlock) {
      for (std::uint32_t x = 0; x < image.width(); x += kBlock) {
        text += static_cast<char>('0' + (image.pixels()[(y * image.width() + x) * 4] + 20) / 40);
      }
      text += ' ';
    }
    return text;
  };
  const std::vector<std::string> rows = {"01 23 45 ", "01 23 45 ", "10 32 54 ", "54 32 10 ",
                                         "45 23 01 ", "024 135 ",  "420 531 ",  "531 420 ",
                                         "135 024 ",  "01 23 45 "};
  for (unsigned orientation = 0; orientation < 10; ++orientation) {
    for (const bool isBigEndian : {false, true}) {
      EXPECT_EQ(shown(exifSegment(orientation, isBigEndian)), rows.at(orientation)) << orientation;
    }
  }
  const std::size_t whole = exifSegment(6, false).size() - 4;
  for (std::size_t size = 0; size < whole - 2; ++size) {
    EXPECT_EQ(shown(exifSegment(6, false, size)), rows[1]) << size;
  }
  EXPECT_EQ(shown("\xFF\xE1\0\x08other\0"s + exifSegment(6, true)), rows[6]);
}

TEST_F(ImageTest, WhatIsDamagedIsNoImage) {
  const Image image = noise(5, 4);
  const std::string samples = textOf(image.pixels());
  const std::string files[] = {
      image.pngData(),
      pngFile({.width = 5, .height = 4, .rows = unfiltered(samples, 20), .isCgBI = true}),
      jpegFile(20, 4, samples, {.channels = 1}),
      jpegFile(20, 4, samples, {.channels = 1, .isProgressive = true})};
  for (const std::string& file : files) {
    const std::optional<Image> whole = Image::decode(file);
    ASSERT_TRUE(whole);
    const bool isPNG = file[0] == '\x89';
    for (std::size_t size = 0; size < file.size(); ++size) {
      EXPECT_FALSE(Image::decode(file.substr(0, size))) << size << " of " << file.size();
      std::string changed = file;
      changed[size] = static_cast<char>(changed[size] ^ 0x10);
      // Only PNG has checksums; in the other a pixel may change.
      EXPECT_TRUE(!Image::decode(changed) || !isPNG) << size;
    }
  }
}

/// How much the process has ever used, in bytes.
std::int64_t peakMemory() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return std::int64_t{usage.ru_maxrss} * 1024;
}

TEST_F(ImageTest, HostileFilesCostNothing) {
  static_assert(Image::isPossibleSize(8192, 8192) && !Image::isPossibleSize(8193, 8192));
  const std::string jpeg = jpegFile(8, 8, std::string(64, 'x'), {.channels = 1});
  const auto resizedJPEG = [&](std::string sides) {  // the frame header's height and width
    std::string file = jpeg;
    return file.replace(file.find("\xFF\xC0") + 5, 4, sides);
  };
  const std::string files[] = {
      "",
      "GIF89a",
      "\xFF\xD8\xFF",
      "\x89PNG\r\n\x1A\n",
      pngFile({.width = 100'000, .height = 100'000, .rows = "\0"s}),
      pngFile({.width = 100'000, .height = 100'000, .rows = "\0"s, .isCgBI = true}),
      pngFile({.width = 16'384, .height = 4'096, .rows = "\0"s}),
      pngFile({.width = 16'384, .height = 4'096, .rows = "\0"s, .isCgBI = true}),
      pngFile({.width = 16'385, .colorType = 0, .rows = std::string(16'386, '\0')}),
      pngFile({.width = 0, .height = 1, .rows = "\0"s, .isCgBI = true}),
      pngFile({.bitDepth = 3, .rows = "\0\1\2\3\4"s, .isCgBI = true}),
      resizedJPEG("\xFF\xDC\xFF\xDC"),
      resizedJPEG("\x10\0\x40\0"s),
      jpegFile(8, 8, std::string(64, 'x'), {.channels = 1, .scans = limits::kJPEGScans + 1})};
  EXPECT_TRUE(Image::decode(
      jpegFile(8, 8, std::string(64, 'x'), {.channels = 1, .scans = limits::kJPEGScans})));
  const std::int64_t before = peakMemory();
  for (const std::string& file : files) {
    EXPECT_EQ(Image::decode(file), std::nullopt) << testing::PrintToString(file.substr(0, 60));
  }
  EXPECT_LT(peakMemory() - before, std::int64_t{64} << 20);
}

TEST_F(ImageTest, ShrinkingAveragesWhatAPixelCovers) {
  const struct {
    Image image;
    std::uint32_t width, height;
    Pixels pixels;
  } rows[] = {
      {{2, 1, {10, 0, 0, 255, 20, 0, 0, 255}}, 1, 1, {15, 0, 0, 255}},
      {{1, 2, {10, 0, 0, 255, 20, 0, 0, 255}}, 1, 1, {15, 0, 0, 255}},
      // The middle one of three goes half to each side.
      {{3, 1, {0, 0, 0, 255, 90, 0, 0, 255, 240, 0, 0, 255}},
       2,
       1,
       {30, 0, 0, 255, 190, 0, 0, 255}},
      // Green that cannot be seen stays out of the mean; half of the light stays.
      {{2, 1, {200, 0, 0, 255, 0, 200, 0, 0}}, 1, 1, {200, 0, 0, 128}},
      {{2, 1, {100, 0, 0, 100, 0, 100, 0, 50}}, 1, 1, {67, 33, 0, 75}},
      {{2, 1, {9, 9, 9, 0, 7, 7, 7, 0}}, 1, 1, {0, 0, 0, 0}},
      {{2, 2, {0, 0, 0, 255, 4, 0, 0, 255, 8, 0, 0, 255, 12, 0, 0, 255}}, 1, 1, {6, 0, 0, 255}}};
  for (const auto& [image, width, height, pixels] : rows) {
    EXPECT_EQ(image.resized(width, height).value().pixels(), pixels);
  }
}

TEST_F(ImageTest, GrowingInterpolates) {
  const Image image(2, 1, {0, 0, 0, 255, 100, 0, 0, 255});
  EXPECT_EQ(image.resized(4, 1).value().pixels(),
            (Pixels{0, 0, 0, 255, 25, 0, 0, 255, 75, 0, 0, 255, 100, 0, 0, 255}));
  const Image pixel(1, 1, {9, 8, 7, 6});
  const Image block = pixel.resized(3, 2).value();
  for (std::size_t i = 0; i < block.pixels().size(); ++i) EXPECT_EQ(block.pixels()[i], 9 - i % 4);
  EXPECT_EQ(block.resized(1, 1), pixel);
}

TEST_F(ImageTest, ResizingIsBounded) {
  const Image image(2, 2, Pixels(16, 255));
  for (const auto& [width, height] :
       {std::pair(0U, 1U), std::pair(1U, 0U), std::pair(Image::kLongestSide + 1, 1U),
        std::pair(Image::kLongestSide, Image::kLongestSide)}) {
    EXPECT_EQ(image.resized(width, height), std::nullopt);
  }
  // One colour stays one colour, however the sides change.
  for (const auto& [width, height] : {std::pair(Image::kLongestSide, 1U), std::pair(7U, 5U)}) {
    const Image grown = image.resized(width, height).value();
    EXPECT_EQ(grown.pixels(), Pixels(std::size_t{width} * height * 4, 255));
    EXPECT_EQ(grown.resized(2, 2), image);
  }
}

}  // namespace
}  // namespace tavlen
