#include "tavlen/foundation/objc/detail/EncodedSignature.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "tavlen/foundation/objc/MethodTypes.h"
#include "tavlen/foundation/objc/detail/TypeLayout.h"

namespace tavlen {
namespace {

using namespace std::literals;

std::string repeated(std::string_view text, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

/// The pieces of `text`, between which blanks stand.
std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
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
      {"i+4@-8:+16", "i", 4, {"@", ":"}}};
  for (const auto& row : rows) {
    const auto signature = encodedSignature(row.encoding);
    ASSERT_NE(signature, nullptr) << row.encoding;
    EXPECT_EQ(signature->methodReturnType(), row.result);
    EXPECT_EQ(signature->methodReturnLength(), row.length) << row.encoding;
    EXPECT_EQ(signature->isOneway(), row.result.starts_with('V'));
    EXPECT_EQ(signature->frameLength(), 224U) << row.encoding;
    std::vector<std::string> arguments;
    for (std::size_t i = 0; i < signature->numberOfArguments(); ++i) {
      arguments.push_back(signature->getArgumentTypeAtIndex(i));
    }
    EXPECT_EQ(arguments, row.arguments);
    for (const std::size_t past : {arguments.size(), arguments.size() + 1, ~std::size_t{0}}) {
      EXPECT_THROW(signature->getArgumentTypeAtIndex(past), std::out_of_range);
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
    std::uint64_t size, alignment;
    const char* types;
  } rows[] = {
      {0, 1, "v {A=}"},
      {0, 4, "[0i]"},
      {1, 1, "c C B"},
      {2, 2, "s S"},
      {4, 4, "i I l L f"},
      {6, 2, "[3s]"},
      {8, 2, "{A=c[3s]}"},
      {8, 4, "jf {A=ci}"},
      {8, 8, "q Q d D @ # : * ^v @? rn^{S} @?<v@?> j@"},
      {12, 4, "{A={B=ic}c}"},
      {16, 8, "jd {A=cq} {A=qc} {_NSRange=QQ} {P=\"a\"@\"b\"i} {P=\"a\"^@\"b\"c}"},
      {16, 8, "{P=\"a\"@\"NSString<A>\"\"b\"@\"C\"} {V<int,(X)(1==1),{f}>=\"__x_\"^i\"__y_\"c}"},
      {16, 16, "t T"},
      {32, 8, "{S=^b3^?@?^(U=id)} {CGRect={CGPoint=dd}{CGSize=dd}}"},
      {32, 16, "{A=ct}"},
      {48, 8, "{CGAffineTransform=dddddd}"}};
  for (const auto& row : rows) {
    for (const std::string& type : words(row.types)) {
      const auto layout = layoutOfType(type);
      ASSERT_TRUE(layout.has_value()) << type;
      EXPECT_EQ(layout->size, row.size) << type;
      EXPECT_EQ(layout->alignment, row.alignment) << type;
    }
  }
}

TEST(EncodedSignature, RefusesWhatThePlatformRefuses) {
  for (const std::string& encoding : words("(U=if)@: v@:(U=if) b3@: {S=b3b5}@: v@:{A={S=ib1}} "
                                           "{S=[2b1]}@: {S}@: {S=i{T}}@: ?@: v@:? "
                                           "{S=?}@: zz v@:Z r ^ v@:^ 16 v@:\"A\"")) {
    EXPECT_EQ(encodedSignature(encoding), nullptr) << encoding;
  }
  for (const std::string_view encoding : {""sv, "v@:\0"sv, "v\0@:"sv}) {
    EXPECT_EQ(encodedSignature(encoding), nullptr) << encoding;
  }
}

TEST(EncodedSignature, HostileTextsAreRefused) {
  std::vector<std::string> rows = words(
      "{ {A {A= {A=i {A=i] {A={B=i} {(A} {A=\"a\"i\"b} {A=\"a\"} {A=\"a\"i#i} [ [4 [4i [4i) [i] [] "
      "[-1i] @\"A @?< @?<v ( (U= ^^^ } v@:} [99999999999999999999i] [18446744073709551615q] "
      "[4611686018427387905[4i]] {A=[281474976710656c]c}");
  // Quadratic work on these would take as long as a test may.
  constexpr std::size_t kMany = 250'000;
  for (const char* piece : {"{", "{A=", "[", "[1", "(", "^", "r", "@?<", "<", "{A=\"a\"@\"b\""}) {
    rows.push_back(repeated(piece, kMany));
  }
  rows.push_back(repeated("{", 1 << 20U));
  rows.push_back(repeated("@\"", kMany + 1));
  rows.push_back(repeated("{<", kMany) + "}");
  rows.push_back(repeated("{A=", kMany) + repeated("}", kMany));
  rows.push_back(repeated("[9", 20) + "i" + repeated("]", 20));
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
