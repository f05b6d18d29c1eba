#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tavlen::bench {

/// A large encoding: a beginning, and a piece that is repeated.
struct SampleEncoding {
  std::string name;
  std::string begin;
  std::string piece;

  /// `size` bytes, or up to a piece more.
  std::string text(std::size_t size) const;
};

const std::vector<SampleEncoding>& sampleEncodings();

}  // namespace tavlen::bench
