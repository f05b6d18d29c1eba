#include "tavlen/foundation/text/NumberText.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace tavlen {
namespace {

/// Around 1, below 1e-4 and above 2^53, where the decimal layout ends.
const std::vector<std::string_view> kTexts[] = {
    {"0.0", "-0.0", "1.0", "-1.0", "100.0", "0.1", "0.2", "0.30000000000000004",
     "0.3333333333333333", "0.6666666666666666", "3.14", "3.141592653589793", "123456789.125",
     "0.10000000149011612"},
    {"0.001", "0.0001", "0.00012345", "9.999e-05", "1e-05", "-1e-05", "2.5e-05", "1e-07",
     "2.220446049250313e-16"},
    {"1000000000000000.0", "9007199254740991.0", "9007199254740992.0", "-9007199254740992.0",
     "9.007199254740994e+15", "1e+16", "1.5e+16", "1.2345678901234568e+17", "1e+21", "1e+22",
     "1e+23", "1e+100", "1.7976931348623157e+308", "2.2250738585072014e-308", "5e-324"}};

template <class Append>
std::string textOf(double value, const Append& append) {
  std::string out = "=";  // what stood there before stays
  append(out, value);
  return out.substr(1);
}

double valueOf(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  EXPECT_TRUE(error == std::errc() && end == text.data() + text.size()) << text;
  return value;
}

TEST(NumberText, DescriptionsAndNumbersHaveTheirLayout) {
  for (const auto& row : kTexts) {
    for (const std::string_view text : row) {
      const double value = valueOf(text);
      EXPECT_EQ(textOf(value, appendDescription), text);
      std::string_view number = text;
      if (number.ends_with(".0")) number.remove_suffix(2);
      EXPECT_EQ(textOf(value, appendNumber), number);
    }
  }
}

TEST(NumberText, WhatIsNoNumberHasADescription) {
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(textOf(infinity, appendDescription), "inf");
  EXPECT_EQ(textOf(-infinity, appendDescription), "-inf");
  const struct {
    std::uint64_t bits;
    std::string_view text;
  } kNaNs[] = {{0x7FF8000000000000, "nan"},
               {0xFFF8000000000000, "-nan"},
               {0x7FF8000000000001, "nan(0x1)"},
               {0x7FF0000000000001, "snan"}};
  for (const auto& c : kNaNs) {
    EXPECT_EQ(textOf(std::bit_cast<double>(c.bits), appendDescription), c.text);
  }
}

TEST(NumberText, EveryNumberReadsBack) {
  std::mt19937_64 random(20'231);
  for (int round = 0; round < 200'000; ++round) {
    const std::uint64_t bits = random();
    // Half of them from the range in which the layout changes, which bit patterns rarely hit.
    const double value = round % 2 == 0 ? std::bit_cast<double>(bits)
                                        : std::ldexp(static_cast<double>(bits >> (bits % 60)), -40);
    if (!std::isfinite(value)) continue;
    const std::string text = textOf(value, appendNumber);
    ASSERT_EQ(std::bit_cast<std::uint64_t>(valueOf(text)), std::bit_cast<std::uint64_t>(value))
        << text;
  }
}

}  // namespace
}  // namespace tavlen
