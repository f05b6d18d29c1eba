#include "tavlen/foundation/image/detail/ImageResizing.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace tavlen {

namespace {

/// The source positions, and the part of each, that make up every position along one side.
class Weights {
 public:
  Weights(std::uint32_t from, std::uint32_t to) {
    starts_.reserve(to);
    for (std::uint32_t i = 0; i < to; ++i) {
      starts_.push_back({0, weights_.size()});
      if (to <= from) {
        addCovered(i, from, to);
      } else {
        addNeighbours(i, from, to);
      }
    }
    starts_.push_back({0, weights_.size()});
  }

  /// The first source position of `i`, and the weights from there on. They add up to 1.
  std::uint32_t first(std::uint32_t i) const { return starts_[i].first; }
  std::span<const float> of(std::uint32_t i) const {
    return std::span(weights_).subspan(starts_[i].offset,
                                       starts_[i + 1].offset - starts_[i].offset);
  }

 private:
  struct Start {
    std::uint32_t first;
    std::size_t offset;
  };

  /// Lengths are in units of which a source position has `to` and a new one `from`: exact integers.
  void addCovered(std::uint32_t i, std::uint64_t from, std::uint64_t to) {
    const std::uint64_t begin = i * from;
    const std::uint64_t end = begin + from;
    starts_.back().first = static_cast<std::uint32_t>(begin / to);
    for (std::uint64_t position = begin / to; position * to < end; ++position) {
      const std::uint64_t covered =
          std::min(end, (position + 1) * to) - std::max(begin, position * to);
      weights_.push_back(static_cast<float>(covered) / static_cast<float>(from));
    }
  }

  void addNeighbours(std::uint32_t i, std::uint32_t from, std::uint32_t to) {
    const double centre = std::clamp((i + 0.5) * from / to - 0.5, 0.0, from - 1.0);
    const auto first = static_cast<std::uint32_t>(centre);
    const auto share = static_cast<float>(centre - first);
    starts_.back().first = first;
    weights_.push_back(1 - share);
    if (share > 0) weights_.push_back(share);
  }

  std::vector<Start> starts_;
  std::vector<float> weights_;
};

/// Adds a row of pixels, times `weight`, to a row of sums, the colours multiplied by their alpha.
void addRow(std::span<const std::uint8_t> row, float weight, std::vector<float>& sums) {
  for (std::size_t i = 0; i < row.size(); i += 4) {
    const float alpha = weight * static_cast<float>(row[i + 3]);
    for (std::size_t channel = i; channel < i + 3; ++channel) {
      sums[channel] += alpha * static_cast<float>(row[channel]);
    }
    sums[i + 3] += alpha;
  }
}

std::uint8_t rounded(float value) {
  return static_cast<std::uint8_t>(std::clamp(value + 0.5F, 0.0F, 255.0F));
}

void appendPixel(std::span<const float> sums, std::span<const float> weights,
                 std::vector<std::uint8_t>& pixels) {
  float red = 0;
  float green = 0;
  float blue = 0;
  float alpha = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    red += weights[i] * sums[4 * i];
    green += weights[i] * sums[4 * i + 1];
    blue += weights[i] * sums[4 * i + 2];
    alpha += weights[i] * sums[4 * i + 3];
  }
  if (rounded(alpha) == 0) return pixels.resize(pixels.size() + 4);
  pixels.insert(pixels.end(), {rounded(red / alpha), rounded(green / alpha), rounded(blue / alpha),
                               rounded(alpha)});
}

}  // namespace

Image resizedImage(const Image& image, std::uint32_t width, std::uint32_t height) {
  const Weights columns(image.width(), width);
  const Weights rows(image.height(), height);
  const std::size_t rowSize = std::size_t{image.width()} * 4;
  std::vector<std::uint8_t> pixels;
  pixels.reserve(std::size_t{width} * height * 4);
  // One row of sums at a time: a whole picture of them would take four times the picture's memory.
  std::vector<float> sums(rowSize);
  for (std::uint32_t y = 0; y < height; ++y) {
    std::fill(sums.begin(), sums.end(), 0.0F);
    std::size_t offset = rows.first(y) * rowSize;
    for (const float weight : rows.of(y)) {
      addRow(std::span(image.pixels()).subspan(offset, rowSize), weight, sums);
      offset += rowSize;
    }
    for (std::uint32_t x = 0; x < width; ++x) {
      appendPixel(std::span(sums).subspan(std::size_t{columns.first(x)} * 4), columns.of(x),
                  pixels);
    }
  }
  return Image(width, height, std::move(pixels));
}

}  // namespace tavlen
