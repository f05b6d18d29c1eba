#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tavlen::bench {

/// A large encoding: a beginning, a piece that is repeated, and an end.
struct SampleEncoding {
  std::string name;
  std::string begin;
  std::string piece;
  std::string end = "";

  /// `size` bytes and the end, or up to a piece more.
  std::string text(std::size_t size) const;
};

const std::vector<SampleEncoding>& sampleEncodings();

}  // namespace tavlen::bench
