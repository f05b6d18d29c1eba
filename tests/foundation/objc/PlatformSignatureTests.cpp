#include "tavlen/foundation/objc/detail/PlatformSignature.h"

#include <gtest/gtest.h>
#include <objc/runtime.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

#include "tavlen/foundation/objc/ObjCRuntime.h"
#include "tavlen/foundation/objc/detail/EncodedSignature.h"
#include "tests/support/StandIns.h"

namespace tavlen {
namespace {

using namespace std::literals;

/// The encodings of all methods of the classes that are loaded.
std::set<std::string> loadedEncodings() {
  const int count = objc_getClassList(nullptr, 0);
  std::vector<Class> classes(static_cast<std::size_t>(count));
  objc_getClassList(classes.data(), count);
  std::set<std::string> encodings;
  for (const Class each : classes) {
    for (const Class side : {each, object_getClass(reinterpret_cast<id>(each))}) {
      unsigned size = 0;
      const std::unique_ptr<Method[], decltype(&std::free)> methods(
          class_copyMethodList(side, &size), &std::free);
      for (unsigned i = 0; i < size; ++i) encodings.insert(method_getTypeEncoding(methods[i]));
    }
  }
  return encodings;
}

std::vector<std::string> typesOf(const MethodSignature& signature) {
  std::vector<std::string> types{signature.methodReturnType()};
  for (std::size_t i = 0; i < signature.numberOfArguments(); ++i) {
    types.push_back(signature.getArgumentTypeAtIndex(i));
  }
  return types;
}

// In a process of its own, in which nothing has loaded a class.
TEST(PlatformSignatureDeathTest, ThereIsNoneWithoutItsClass) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(platformSignature("v@:") == nullptr ? 0 : 1), testing::ExitedWithCode(0),
              "");
}

TEST(PlatformSignature, AnswersWhatTheObjectDoes) {
  const StandIns standIns;
  const auto signature = platformSignature("Vv32@0:8r*16d24");
  ASSERT_NE(signature, nullptr);
  EXPECT_EQ(typesOf(*signature), (std::vector<std::string>{"Vv", "@", ":", "r*", "d"}));
  EXPECT_TRUE(signature->isOneway());
  EXPECT_EQ(platformSignature("@24@0:8@16")->methodReturnLength(), 8U);
  EXPECT_TRUE(signature->description().starts_with("<NSMethodSignature"))
      << signature->description();
  EXPECT_NE(signature->debugDescription(), "");
  EXPECT_THROW(signature->getArgumentTypeAtIndex(4), std::out_of_range);
  EXPECT_EQ(platformSignature(""), nullptr);
  EXPECT_EQ(platformSignature("v@:\0@"sv), nullptr);
  // GNUstep's reader runs out of stack on each of these.
  for (const std::string_view nest : {"{A="sv, "(A="sv, "[1"sv, "^"sv, "r"sv, "^{"sv}) {
    std::string encoding;
    for (int i = 0; i < 250'000; ++i) encoding += nest;
    EXPECT_EQ(platformSignature(encoding + "i"), nullptr) << nest;
  }
  EXPECT_NE(platformSignature("^^^^^^^^^^^^^^^vrnNoORVi^{A<B<C>>=}"), nullptr);
}

TEST(PlatformSignature, KeepsTheObjectThatItWraps) {
  const StandIns standIns;
  id probe = nullptr;
  const auto live = [] {
    return ObjCRuntime::send<int>(ObjCRuntime::classNamed("RuntimeProbe"), "live");
  };
  std::shared_ptr<const MethodSignature> wrapper;
  {
    const ObjCRuntime::AutoreleasePool pool;
    probe = ObjCRuntime::send(ObjCRuntime::classNamed("RuntimeProbe"), "probe");
    wrapper = MethodSignature::initWithSignature(probe);
  }
  EXPECT_EQ(live(), 1);
  // It is no signature, so it raises at every question.
  EXPECT_EQ(wrapper->numberOfArguments(), 0U);
  EXPECT_EQ(wrapper->methodReturnType(), "");
  EXPECT_FALSE(wrapper->isOneway());
  EXPECT_THROW(wrapper->getArgumentTypeAtIndex(0), std::out_of_range);
  wrapper.reset();
  EXPECT_EQ(live(), 0);
  EXPECT_EQ(MethodSignature::initWithSignature(nullptr), nullptr);
}

TEST(PlatformSignature, AgreesWithOurReading) {
  const StandIns standIns;
  const auto encodings = loadedEncodings();
  EXPECT_GT(encodings.size(), 500U);
  for (const std::string& encoding : encodings) {
    const auto theirs = platformSignature(encoding);
    const auto ours = encodedSignature(encoding);
    ASSERT_NE(theirs, nullptr) << encoding;
    ASSERT_NE(ours, nullptr) << encoding;
    EXPECT_EQ(typesOf(*ours), typesOf(*theirs)) << encoding;
    EXPECT_EQ(ours->isOneway(), theirs->isOneway()) << encoding;
    EXPECT_EQ(ours->methodReturnLength(), theirs->methodReturnLength()) << encoding;
  }
  // Where the two differ: the frame, which is not the one of a device, and unions by value, which
  // Apple's refuses.
  EXPECT_EQ(platformSignature("v24@0:8@16")->frameLength(), 24U);
  EXPECT_EQ(encodedSignature("v24@0:8@16")->frameLength(), 224U);
  EXPECT_NE(platformSignature("v@:(U=if)"), nullptr);
  EXPECT_EQ(encodedSignature("v@:(U=if)"), nullptr);
}

}  // namespace
}  // namespace tavlen
