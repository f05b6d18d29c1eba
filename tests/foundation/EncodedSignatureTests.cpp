#include "tavlen/foundation/EncodedSignature.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <vector>

#include "tavlen/foundation/MethodTypes.h"
#include "tavlen/foundation/TypeLayout.h"

namespace tavlen {
namespace {

using namespace std::literals;

std::string repeated(std::string_view text, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

TEST(EncodedSignature, ReadsTypesWithoutTheirOffsets) {
  const std::string rectangle = "{CGRect={CGPoint=dd}{CGSize=dd}}";
  const struct {
    std::string encoding, result;
    std::size_t length;
    std::vector<std::string> arguments;
  } rows[] = {
      {"v16@0:8", "v", 0, {"@", ":"}},
      {"v@:", "v", 0, {"@", ":"}},
      {"@24@0:8@16", "@", 8, {"@", ":", "@"}},
      {"c@:iSdf", "c", 1, {"@", ":", "i", "S", "d", "f"}},
      {"B@:", "B", 1, {"@", ":"}},
      {rectangle + "@:", rectangle, 32, {"@", ":"}},
      {"Vv@:", "Vv", 0, {"@", ":"}},
      {"v@:r*^vn@", "v", 0, {"@", ":", "r*", "^v", "n@"}},
      {"v@?0q8", "v", 0, {"@?", "q"}},
      {"v", "v", 0, {}},
      {"r^{S}@:^(U=id)^?@?@?<v@?>", "r^{S}", 8, {"@", ":", "^(U=id)", "^?", "@?", "@?<v@?>"}},
      {"@\"NSString\"24@0:8@\"<A><B>\"16", "@\"NSString\"", 8, {"@", ":", "@\"<A><B>\""}},
      {"v32@0:8^{vector<int, std::less<(a > b)>>=^i}16^{operator<=}24",
       "v",
       0,
       {"@", ":", "^{vector<int, std::less<(a > b)>>=^i}", "^{operator<=}"}},
      {"i+4@-8:+16", "i", 4, {"@", ":"}},
  };
  for (const auto& row : rows) {
    const auto signature = encodedSignature(row.encoding);
    ASSERT_NE(signature, nullptr) << row.encoding;
    EXPECT_EQ(signature->methodReturnType(), row.result);
    EXPECT_EQ(signature->methodReturnLength(), row.length) << row.encoding;
    EXPECT_EQ(signature->isOneway(), row.result.starts_with('V'));
    EXPECT_EQ(signature->frameLength(), 224U) << row.encoding;
    std::vector<std::string> arguments;
    for (std::size_t i = 0; i < signature->numberOfArguments(); ++i) {
      arguments.push_back(signature->argumentTypeAtIndex(i));
    }
    EXPECT_EQ(arguments, row.arguments);
    for (const std::size_t past : {arguments.size(), arguments.size() + 1, ~std::size_t{0}}) {
      EXPECT_THROW(signature->argumentTypeAtIndex(past), std::out_of_range);
    }
  }
  EXPECT_TRUE(encodedSignature("rVv@:")->isOneway());
  EXPECT_FALSE(encodedSignature("v@V@:")->isOneway());
  const auto signature = encodedSignature("d24@0:8i16");
  EXPECT_EQ(signature->description(), "<MethodSignature: d@:i>");
  EXPECT_EQ(signature->debugDescription(),
            "<MethodSignature: d@:i; arguments: 3, frame: 224 bytes, result: 8 bytes>");
}

TEST(TypeLayout, IsTheOneOfArm64) {
  const struct {
    const char* type;
    std::uint64_t size, alignment;
  } rows[] = {
      {"v", 0, 1},
      {"C", 1, 1},
      {"s", 2, 2},
      {"L", 4, 4},
      {"q", 8, 8},
      {"D", 8, 8},
      {"rn^{S}", 8, 8},
      {"@?<v@?>", 8, 8},
      {"T", 16, 16},
      {"jf", 8, 4},
      {"jd", 16, 8},
      {"j@", 8, 8},
      {"[3s]", 6, 2},
      {"[0i]", 0, 4},
      {"{A=}", 0, 1},
      {"{A=ci}", 8, 4},
      {"{A=cq}", 16, 8},
      {"{A=qc}", 16, 8},
      {"{A=c[3s]}", 8, 2},
      {"{A=ct}", 32, 16},
      {"{A={B=ic}c}", 12, 4},
      {"{_NSRange=QQ}", 16, 8},
      {"{CGAffineTransform=dddddd}", 48, 8},
      {"{P=\"a\"@\"b\"i}", 16, 8},
      {"{P=\"a\"^@\"b\"c}", 16, 8},
      {"{P=\"a\"@\"NSString<A>\"\"b\"@\"C\"}", 16, 8},
      {"{V<int, (X)(1 == 1), {f}>=\"__x_\"^i\"__y_\"c}", 16, 8},
      {"{S=^b3^?@?^(U=id)}", 32, 8},
  };
  for (const auto& row : rows) {
    const auto layout = layoutOfType(row.type);
    ASSERT_TRUE(layout.has_value()) << row.type;
    EXPECT_EQ(layout->size, row.size) << row.type;
    EXPECT_EQ(layout->alignment, row.alignment) << row.type;
  }
  const auto floatSize = [](const char* type) { return layoutOfType(type)->floatSize; };
  EXPECT_EQ(floatSize("{A=f{B=f[2f]}}"), 4);
  EXPECT_EQ(floatSize("{A={E=}d}"), 8);
  for (const char* mixed : {"{A=fd}", "{A=fdf}", "{A=fi}", "{A=if}", "^f"}) {
    EXPECT_EQ(floatSize(mixed), 0) << mixed;
  }
}

TEST(EncodedSignature, FrameHoldsWhatRegistersDoNot) {
  const struct {
    std::string arguments;
    std::size_t onStack;
  } rows[] = {
      {"qqqqqqdddddddd", 0},
      {"qqqqqqq", 8},
      {"qqqqqqc", 8},
      {"qqqqqqcccci", 8},  // a scalar takes its own size
      {"qqqqqqcq", 16},    // at its own alignment
      {"ddddddddff", 8},
      {"{A=dddd}{A=dddd}", 0},         // up to four floats
      {"{A=dddd}{A=ddd}{A=dd}d", 24},  // nothing goes back to the registers
      {"{A=ddddd}qqqqqq", 8},          // five go by address
      {"{A=ccc}qqqqqq", 8},
      {"qqqqq{A=qq}q", 24},      // not half in registers
      {"qqqqqq{A=c}{A=c}", 16},  // small structures take whole words
      {"qqqqqq{A=ff}f", 0},
      {"ddddddddf{A=ff}f", 16},  // at the alignment of its floats
      {"qqqqqq[100q]", 8},       // an array goes by address
      {"qqqqqqt", 16},
      {"qqqqqqqt", 32},
      {"qqqqqqv{E=}", 0},
      {"qqqqqq[0i]", 8},
      {"jdjdjdjdjf", 8},
  };
  for (const auto& row : rows) {
    const auto signature = encodedSignature("v@:" + row.arguments);
    ASSERT_NE(signature, nullptr);
    EXPECT_EQ(signature->frameLength(), 224 + row.onStack) << row.arguments;
  }
}

TEST(EncodedSignature, RefusesWhatThePlatformRefuses) {
  for (const std::string_view encoding : {""sv,
                                          "(U=if)@:"sv,
                                          "v@:(U=if)"sv,
                                          "b3@:"sv,
                                          "{S=b3b5}@:"sv,
                                          "v@:{A={S=ib1}}"sv,
                                          "{S=[2b1]}@:"sv,
                                          "{S}@:"sv,
                                          "{S=i{T}}@:"sv,
                                          "?@:"sv,
                                          "v@:?"sv,
                                          "{S=?}@:"sv,
                                          "zz"sv,
                                          "v@:Z"sv,
                                          "v@:\0"sv,
                                          "v\0@:"sv,
                                          "r"sv,
                                          "^"sv,
                                          "v@:^"sv,
                                          "16"sv,
                                          "v@:\"A\""sv}) {
    EXPECT_EQ(encodedSignature(encoding), nullptr) << encoding;
  }
}

TEST(EncodedSignature, HostileTextsAreRefusedInLinearTime) {
  constexpr std::size_t kMany = 250'000;
  const std::string rows[] = {
      "{",
      "{A",
      "{A=",
      "{A=i",
      "{A=i]",
      "{A={B=i}",
      "[",
      "[4",
      "[4i",
      "[4i)",
      "[i]",
      "[]",
      "@\"A",
      "@?<",
      "@?<v",
      "(",
      "(U=",
      "{A=\"a\"i\"b}",
      "{A=\"a\"}",
      "{A=\"a\"i i}",
      "{(A}",
      "[-1i]",
      "[99999999999999999999i]",
      "[18446744073709551615q]",
      "[4611686018427387905[4i]]",
      "{A=[281474976710656c]c}",
      "^^^",
      "}",
      "v@:}",
      repeated("{", 1 << 20U),
      repeated("{A=", kMany / 3),
      repeated("[", kMany),
      repeated("[1", kMany),
      repeated("(", kMany),
      repeated("^", kMany),
      repeated("r", kMany),
      repeated("@\"", kMany + 1),
      repeated("{A=\"a\"@\"b\"", kMany / 10),
      repeated("@?<", kMany / 3),
      repeated("<", kMany),
      repeated("{<", kMany / 2) + "}",
      repeated("{A=", kMany / 4) + repeated("}", kMany / 4),
      repeated("[9", 20) + "i" + repeated("]", 20),
  };
  const auto start = std::chrono::steady_clock::now();
  for (const std::string& each : rows) {
    for (const std::string& encoding : {each, "v@:" + each}) {
      EXPECT_EQ(encodedSignature(encoding), nullptr) << encoding.substr(0, 40);
    }
  }
  // Long, but in order.
  EXPECT_EQ(encodedSignature(repeated("@", kMany))->numberOfArguments(), kMany - 1);
  EXPECT_EQ(encodedSignature("v" + repeated("^", kMany) + "v")->numberOfArguments(), 1U);
  EXPECT_EQ(encodedSignature("{A=" + repeated("c", kMany) + "}")->methodReturnLength(), kMany);
  EXPECT_EQ(layoutOfType(repeated("{A=", TypeLayout::kDeepest) + "i" +
                         repeated("}", TypeLayout::kDeepest))
                ->size,
            4U);
  // Quadratic work would take hours.
  EXPECT_LT(std::chrono::steady_clock::now() - start, 60s);
}

// A text cut anywhere, or with any byte replaced, is read or refused; what is read consists of
// types that are there.
TEST(EncodedSignature, DamagedTextsDoNoHarm) {
  const std::string good =
      "r^{A=\"a\"@\"B<C>\"\"b\"[2{D=ff}]}32@0:8@?<v@?q>16{E<F, (G)1>=ci}24Vn[3^(H=id)]28";
  ASSERT_NE(encodedSignature(good), nullptr);
  int read = 0;
  for (std::size_t i = 0; i < good.size(); ++i) {
    for (const char c : "{}[](<>\"=?@^b9iVZ"s) {
      std::string damaged = good;
      damaged[i] = c;
      for (const std::string& text : {damaged, damaged.substr(0, i + 1)}) {
        const auto signature = encodedSignature(text);
        const auto types = splitMethodTypes(text);
        if (signature == nullptr) continue;
        ++read;
        ASSERT_TRUE(types.has_value());
        EXPECT_EQ(signature->numberOfArguments(), types->arguments.size());
        EXPECT_EQ(encodedSignature(signature->methodReturnType())->methodReturnLength(),
                  signature->methodReturnLength());
      }
    }
  }
  EXPECT_GT(read, 100);
}

}  // namespace
}  // namespace tavlen
