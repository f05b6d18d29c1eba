#include "SampleManifest.h"

#include <array>
#include <cstdint>
#include <random>
#include <string_view>
#include <utility>

#include "tavlen/tweaks/TweakProcessor.h"

namespace tavlen::bench {

namespace {

constexpr std::size_t kHooksPerClass = 10;

struct Method {
  std::string_view selector;
  std::string_view signature;
  bool isClassMethod;
  /// The index of the first of its three parameters.
  std::int64_t firstIndex;
};

constexpr std::array<Method, 10> kMethods = {{
    {"setTitle:forState:animated:", "v36@0:8@16Q24B32", false, 0},
    {"tableView:titleForHeaderInSection:", "@32@0:8@16q24", false, -1},
    {"application:openURL:options:", "B40@0:8@16@24@32", false, 0},
    {"collectionView:cellForItemAtIndexPath:", "@32@0:8@16@24", false, -1},
    {"sharedInstanceWithName:locale:", "@32@0:8@16@24", true, -1},
    {"setBackgroundColor:cornerRadius:clips:", "v36@0:8@16d24B32", false, 0},
    {"alertWithTitle:message:style:", "@40@0:8@16@24q32", true, 0},
    {"objectForKey:defaultValue:", "@32@0:8@16@24", false, -1},
    {"registerClass:forCellReuseIdentifier:inBundle:", "v40@0:8#16@24@32", false, 0},
    {"connection:didReceiveResponse:", "v32@0:8@16@24", false, -1},
}};

constexpr std::array<std::string_view, 8> kSubjects = {
    "Profile", "Settings", "Conversation", "Feed", "Account", "Playback", "Search", "Notification",
};
constexpr std::array<std::string_view, 6> kRoles = {
    "ViewController", "TableViewCell", "Manager", "Service", "HeaderView", "DataSource",
};
constexpr std::array<std::string_view, 5> kTexts = {
    "OK",
    "Welcome back",
    "You have no new messages.",
    "Über uns – 日本語",
    "She said \"maybe\"\nand left.",
};

/// A source of pseudo-random samples. Uses the generator directly: its numbers are the same with
/// every standard library, those of distributions are not.
class Draw {
 public:
  std::size_t below(std::size_t limit) { return random_() % limit; }

  template <std::size_t size>
  std::string_view oneOf(const std::array<std::string_view, size>& texts) {
    return texts[below(size)];
  }

  std::string numbered(std::string_view begin, std::string_view end, std::size_t limit) {
    return std::string(begin).append(std::to_string(below(limit))).append(end);
  }

  /// A colour component with few digits, as typed by people, or with many, as from a colour picker.
  double share() {
    return below(2) == 0 ? static_cast<double>(below(101)) / 100
                         : static_cast<double>(below(256)) / 255;
  }

  double number() {
    return below(2) == 0 ? static_cast<double>(below(100'000)) / 100
                         : static_cast<double>(below(1'000'000)) / 7;
  }

  Parameter leaf(std::size_t kind) {
    switch (kind) {
      case 0:
        return NilParameter{};
      case 1:
        return CodeParameter{numbered("arguments[0] + ", "", 100)};
      case 2:
        return ValueParameter<std::int64_t>{static_cast<std::int64_t>(below(20'000)) - 10'000};
      case 3:
        return ValueParameter<std::uint64_t>{below(1'000'000)};
      case 4:
        return ValueParameter<double>{number()};
      case 5:
        return ValueParameter<std::string>{std::string(oneOf(kTexts))};
      case 6:
        return ValueParameter<bool>{below(2) == 0};
      case 7:
        return URLParameter{numbered("https://example.com/items/", "?lang=en&page=1", 10'000)};
      case 8:
        return DateParameter{{static_cast<double>(below(700'000'000)) + 0.25}};
      case 9:
        return ColorParameter{share(), share(), share(), 1};
      case 10:
        return DataParameter{numbered("sounds/chime-", ".bin", 1000)};
      case 11:
        return ImageParameter{numbered("background-", "@2x.png", 1000)};
      case 12:
        return ClassParameter{className(below(1000))};
      case 13:
        return SelectorParameter{std::string(kMethods[below(kMethods.size())].selector)};
      default:
        return ProtocolParameter{std::string(oneOf(kSubjects)) + "Delegate"};
    }
  }

  Parameter parameter() {
    const std::size_t kind = below(kKinds);
    if (kind < kLeafKinds) return leaf(kind);
    if (kind == kLeafKinds) {
      return ArrayParameter::withItems(
          {leaf(below(kLeafKinds)), leaf(below(kLeafKinds)), leaf(below(kLeafKinds))});
    }
    std::vector<DictionaryParameter::Pair> pairs;
    for (const std::string_view key : {"title", "value"}) {
      DictionaryParameter::Pair pair;
      pair.setKey(ValueParameter<std::string>{std::string(key)});
      pair.setValue(leaf(below(kLeafKinds)));
      pairs.push_back(std::move(pair));
    }
    return DictionaryParameter::withItems(std::move(pairs));
  }

  static std::string className(std::size_t index) {
    std::string name = "TV";
    name += kSubjects[index % kSubjects.size()];
    name += kRoles[index / kSubjects.size() % kRoles.size()];
    return name += std::to_string(index);
  }

 private:
  static constexpr std::size_t kKinds = std::variant_size_v<Parameter>;
  static constexpr std::size_t kLeafKinds = kKinds - 2;

  std::mt19937 random_;
};

}  // namespace

std::vector<Hook> sampleHooks(std::size_t count) {
  Draw draw;
  std::vector<Hook> hooks;
  hooks.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const Method& method = kMethods[i % kHooksPerClass];
    std::map<std::int64_t, Parameter> args;
    for (std::int64_t argument = 0; argument < 3; ++argument)
      args.emplace(method.firstIndex + argument, draw.parameter());
    hooks.push_back(Hook::with(Draw::className(i / kHooksPerClass), std::string(method.selector),
                               std::string(method.signature), method.isClassMethod,
                               std::move(args)));
    if (i % 4 == 0) hooks.back().customName = "Hook " + std::to_string(i);
  }
  return hooks;
}

TweakFile::Manifest sampleManifest(std::size_t hookCount) {
  TweakFile::Manifest manifest;
  manifest.configuration.name = "Sample";
  manifest.configuration.bundleID = "com.example.sample";
  manifest.setHooks(sampleHooks(hookCount));
  return manifest;
}

std::string sampleSource(std::size_t size) {
  std::string script;
  for (std::size_t i = 0; script.size() < size / 2; ++i) {
    script += "// The titles of a list, shortened where they do not fit.\nhookClass(\"List" +
              std::to_string(i) + R"(", {}, {
	"@24@0:8Q16-titleAtIndex:": function(index) {
		const title = %orig, limit = [self maximumLength];
		for (let i = 0; i < names.length; ++i) {
			if ([title hasPrefix:names[i]]) return [title substringFromIndex:[names[i] length]];
		}
		[[NSUserDefaults standardUserDefaults] setObject:@[title, @(limit * 2)] forKey:@"last"];
		return limit > 0 ? [title substringToIndex:limit] : %orig(0);
	},
});

)";
  }
  // The functions of hooks have similar lengths, so a sample shows how many are needed.
  constexpr std::size_t kProbe = 1000;
  const std::size_t probed = TweakProcessor::generateCode(sampleHooks(kProbe)).size();
  const std::size_t count = size / 2 * kProbe / probed + 1;
  return TweakProcessor::assembled(TweakProcessor::generateCode(sampleHooks(count)), script);
}

}  // namespace tavlen::bench
