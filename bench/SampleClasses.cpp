#include "SampleClasses.h"

#include <array>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace tavlen::bench {

namespace {

constexpr std::size_t kMethodsPerClass = 20;

constexpr std::array<std::string_view, 12> kVerbs = {
    "set",    "_update", "did",       "will", "should",      "load",
    "handle", "perform", "configure", "_set", "_invalidate", "fetch"};
constexpr std::array<std::string_view, 16> kNouns = {
    "View",  "Controller", "Item",   "Cell",  "IndexPath", "Delegate",   "Session", "Request",
    "Color", "Layout",     "Buffer", "State", "Animation", "Transition", "Context", "Identifier"};
constexpr std::array<std::string_view, 8> kLabels = {
    "withOptions:", "animated:",  "completion:", "error:",
    "forState:",    "inContext:", "at:",         "from:"};
constexpr std::array<std::string_view, 12> kEncodings = {
    "v16@0:8",
    "@16@0:8",
    "B16@0:8",
    "q16@0:8",
    "v24@0:8@16",
    "B24@0:8@16",
    "@32@0:8@16@24",
    "v20@0:8B16",
    "v40@0:8@16@24@?32",
    "{CGSize=dd}32@0:8{CGSize=dd}16",
    "{CGRect={CGPoint=dd}{CGSize=dd}}16@0:8",
    "v56@0:8{CGRect={CGPoint=dd}{CGSize=dd}}16@48",
};
constexpr std::array<std::string_view, 4> kArguments = {"@", "q", "d", "^@"};

class Sample {
 public:
  std::shared_ptr<ObjCClass> makeClass(std::size_t number) {
    ObjCClass::Methods methods;
    for (std::size_t i = 0; i < kMethodsPerClass; ++i) {
      methods.push_back(std::make_shared<ObjCMethod>(selector(), encoding(), i >= 16));
    }
    std::vector<SharedText> protocols;
    for (std::size_t i = below(3); i > 0; --i) protocols.push_back(word(kNouns) + "Protocol");
    const bool isSwift = below(8) == 0;
    const std::string name = "PX" + word(kNouns) + word(kNouns) + std::to_string(number);
    return std::make_shared<ObjCClass>(
        name, std::move(methods),
        isSwift ? std::optional<SharedText>("_TtC6Sample" + std::to_string(number)) : std::nullopt,
        "UI" + word(kNouns), "/System/Library/Frameworks/UIKit.framework/UIKit",
        std::move(protocols));
  }

 private:
  std::size_t below(std::size_t limit) { return random_() % limit; }

  template <std::size_t N>
  std::string word(const std::array<std::string_view, N>& words) {
    return std::string(words[below(N)]);
  }

  std::string selector() {
    std::string text = word(kVerbs) + word(kNouns) + word(kNouns);
    const std::size_t labels = below(4);
    if (labels > 0) text += ':';
    for (std::size_t i = 1; i < labels; ++i) text += word(kLabels);
    return text;
  }

  /// Half of the encodings are plain; the rest have a suffix, so that there are several hundred.
  std::string encoding() {
    std::string text = word(kEncodings);
    if (below(2) == 0) return text;
    for (std::size_t i = 64; text.size() < 56 && i < 88; i += 8) {
      text += word(kArguments) + std::to_string(i);
    }
    return text;
  }

  std::mt19937 random_{1};  // its sequence is defined by the standard
};

}  // namespace

std::vector<std::shared_ptr<ObjCClass>> sampleClasses(std::size_t count) {
  Sample sample;
  std::vector<std::shared_ptr<ObjCClass>> classes;
  for (std::size_t i = 0; i < count; ++i) classes.push_back(sample.makeClass(i));
  return classes;
}

}  // namespace tavlen::bench
