#include "tavlen/introspection/classes/MethodSignature.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace tavlen {
namespace {

TEST(MethodSignature, IsMadeOfAnEncodingUnlessMalformed) {
  const auto signature = MethodSignature::signatureWithObjCTypes("v@:r*");
  ASSERT_TRUE(signature.has_value());
  EXPECT_EQ(signature->getArgumentTypeAtIndex(2), "r*");
  EXPECT_THROW(signature->getArgumentTypeAtIndex(3), std::out_of_range);
  EXPECT_FALSE(MethodSignature::signatureWithObjCTypes("v@:{").has_value());
}

/// A signature of somebody else's making.
class OtherSignature : public SignatureObject {
 public:
  std::size_t numberOfArguments() const override { return 1; }
  std::size_t frameLength() const override { return 2; }
  bool isOneway() const override { return true; }
  std::size_t methodReturnLength() const override { return 3; }
  std::string argumentTypeAtIndex(std::size_t index) const override {
    return std::to_string(index);
  }
  std::string methodReturnType() const override { return "result"; }
  std::string description() const override { return "text"; }
  std::string debugDescription() const override { return "more text"; }
};

TEST(MethodSignature, AsksTheObjectThatItWraps) {
  const auto signature = MethodSignature::initWithSignature(std::make_shared<OtherSignature>());
  EXPECT_EQ(signature.numberOfArguments(), 1U);
  EXPECT_EQ(signature.frameLength(), 2U);
  EXPECT_TRUE(signature.isOneway());
  EXPECT_EQ(signature.methodReturnLength(), 3U);
  EXPECT_EQ(signature.getArgumentTypeAtIndex(7), "7");
  EXPECT_EQ(signature.methodReturnType(), "result");
  EXPECT_EQ(signature.description(), "text");
  EXPECT_EQ(signature.debugDescription(), "more text");
}

}  // namespace
}  // namespace tavlen
