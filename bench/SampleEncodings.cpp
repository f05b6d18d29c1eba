#include "SampleEncodings.h"

#include <string_view>

namespace tavlen::bench {

namespace {

/// Nesting levels, within the limit on depth.
constexpr std::size_t kLevels = 200;

std::string nest(std::string_view opening, std::string_view innermost, std::string_view closing) {
  std::string out;
  for (std::size_t i = 0; i < kLevels; ++i) out += opening;
  out += innermost;
  for (std::size_t i = 0; i < kLevels; ++i) out += closing;
  return out;
}

}  // namespace

std::string SampleEncoding::text(std::size_t size) const {
  std::string out = begin;
  while (out.size() < size) out += piece;
  return out + end;
}

const std::vector<SampleEncoding>& sampleEncodings() {
  static const std::vector<SampleEncoding> samples = {
      {"flat", "{X=", "i"},
      {"wide", "{X=", R"({?="a"@"NSObject""b"^{B}"c"[4f]}r*@?)"},
      {"names", "{X=", R"("member"@"other"i)"},
      {"bitFields", "{X=", "b"},
      {"deep", "{X=", nest("{Y=i", "^{Z}", "d}")},
      {"deepNames", "{X=", nest(R"({P="a")", "i", R"("b"@"c"@"d"i})")},
      {"pastTheBound", "", "{X="},
      {"namesPastTheBound", "", R"({P="a"{Q="b"@)"},
      {"takenBack", R"x({X="a"(Q=@"b)"a"(Q=@"b)"a"(Q=@"b)")x", "b", ")))x"},
      {"provoking", "{X=", R"("a"(Q=@"b))"},
  };
  return samples;
}

}  // namespace tavlen::bench
