#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tavlen::bench {

/// A large encoding, made of a beginning, a repeated piece and an end.
struct SampleEncoding {
  std::string name;      ///< of the shape, for the benchmark's name
  std::string begin;     ///< before the pieces
  std::string piece;     ///< repeated to reach the size
  std::string end = "";  ///< after the pieces

  /// An encoding of at least `size` bytes: whole pieces, and the end.
  std::string text(std::size_t size) const;
};

/// One encoding for each shape of type.
const std::vector<SampleEncoding>& sampleEncodings();

}  // namespace tavlen::bench
