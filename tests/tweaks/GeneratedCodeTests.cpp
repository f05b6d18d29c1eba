#include <gtest/gtest.h>

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/javascript/JavaScriptContext.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/tweaks/Manifest.h"
#include "tavlen/tweaks/TweakProcessor.h"
#include "tests/support/TestPaths.h"

namespace tavlen {
namespace {

namespace fs = std::filesystem;

const fs::path kTweaks = fs::path(paths().examples) / "tweaks";
const fs::path kData = paths().testData;

/// The code of an example runs in an engine, under the run time of tests/data/runtime.js.
class GeneratedCodeTest : public testing::Test {
 protected:
  GeneratedCodeTest() {
    TweakProcessor processor(paths().resources);
    output_ = processor.process(*TweakFile::at(kTweaks / "Everything"));
    run(readFile(kData / "runtime.js"), "runtime.js");
    run(output_.code, "code.js");
  }

  /// The text of the script's value; an exception fails the test.
  std::string run(const std::string& script, const char* name = "test") {
    const std::string text = context_->evaluate(script, name).text().value_or("");
    if (const auto exception = context_->exception()) ADD_FAILURE() << *exception->text();
    return text;
  }
  std::string callHook(const char* className, const char* key, const std::string& args,
                       const std::string& answers = "{}") {
    return run(std::string("callHook('") + className + "', '" + key + "', " + args + ", " +
               answers + ")");
  }
  std::string originOf(const std::string& token) {
    return run("origin(" + encodeJSON(output_.code) + ", " + encodeJSON(output_.map) + ", " +
               encodeJSON(token) + ")");
  }

  const std::shared_ptr<JavaScriptContext> context_ = JavaScriptContext::make();
  TweakProcessor::Output output_;
};

TEST_F(GeneratedCodeTest, HooksDoWhatTheirParametersSay) {
  // The result, and below it what happened, in its order.
  const struct {
    const char* className;
    const char* key;
    const char* args;
    const char* expected;
  } cases[] = {
      {"AppDelegate", "v24@0:8@16-applicationDidBecomeActive:", "['app']",
       "original\norig(\"app\")"},
      {"WelcomeViewController", "@24@0:8Q16-titleForState:", "[7]",
       "\"Welcome back, \\\"friend\\\" \\\\o/\"\norig(7)"},
      {"WelcomeViewController", "v40@0:8q16Q24d32-setBadge:maximum:ratio:", "[1, 2, 3]",
       "original\norig(-3, 18446744073709552000, 0.1)"},
      {"AppSettings", "B16@0:8-isEnabled", "[]", "true\norig()"},
      {"AppSettings", "v40@0:8#16:24@32-registerClass:action:conforming:", "[1, 2, 3]",
       "original\norig(NSClassFromString<@@>(\"NSObject\"), "
       "NSSelectorFromString<:@>(\"performUpdate:\"), NSProtocolFromString<@@>(\"NSCopying\"))"},
      {"ThemeManager", "@16@0:8-accessoryView", "[]", "nil\norig()"},
      {"ThemeManager", "v20@0:8f16-setProgress:", "[0.3]", "original\norig(0.6)"},
      {"ThemeManager", "v20@0:8f16-setProgress:", "[0.8]", "original\norig(1)"}};
  for (const auto& c : cases) {
    EXPECT_EQ(callHook(c.className, c.key, c.args), c.expected) << c.key;
  }
}

TEST_F(GeneratedCodeTest, FilesAreLookedUpInTheResources) {
  const std::string image = "[resourcesPath stringByAppendingPathComponent:\"background.png\"]";
  const std::string data = "[resourcesPath stringByAppendingPathComponent:\"chime.bin\"]";
  const std::string newImage = "[[UIImage alloc] initWithContentsOfFile:" + image + "]";
  const std::string newData = "[[NSData alloc] initWithContentsOfFile:" + data + "]";
  EXPECT_EQ(callHook("ThemeManager", "v32@0:8@16@24-setBackground:sound:", "[1, 2]"),
            "original\n[UIImage alloc]\n" + image + "\n" + newImage + "\n[NSData alloc]\n" + data +
                "\n" + newData + "\norig(" + newImage + ", " + newData + ")");
}

TEST_F(GeneratedCodeTest, ADictionaryHoldsItsPairsInTheirOrder) {
  const std::string log = callHook("AppSettings", "@16@0:8+sharedDefaults", "[]");
  EXPECT_EQ(log.substr(0, log.find('\n')),
            "[NSDictionary dictionaryWithObjects:@["
            "[NSURL URLWithString:\"https://example.com/notes?a=1&b=2\"], "
            "[NSDate dateWithTimeIntervalSince1970:1700000000.25], "
            "[UIColor colorWithRed:0.2 green:0.4 blue:1 alpha:1], "
            "@[\"title\", [NSNull null], "
            "@[[NSDictionary dictionaryWithObjects:@[false, @[]] forKeys:@[1, 2]]]]]"
            " forKeys:@[\"home\", \"installed\", \"tint\", \"columns\"]]");
}

TEST_F(GeneratedCodeTest, TheScriptsHooksRunBesideThem) {
  const char* launch = "B32@0:8@16@24-application:didFinishLaunchingWithOptions:";
  const std::string asked =
      "[[\"app\" delegate] respondsToSelector:@selector(application:openURL:)]";
  const auto log = [&](const std::string& launches, const std::string& arguments) {
    const std::string defaults = "[NSUserDefaults standardUserDefaults]";
    return "original\n" + defaults + "\n[" + defaults + " setObject:@" + launches +
           " forKey:@\"launches\"]\n[" + defaults +
           " setObject:@[@\"first\", @1, @{@\"nested\": @[]}] forKey:@\"state\"]\n"
           "[\"app\" delegate]\n" +
           asked + "\norig(" + arguments + ")";
  };
  EXPECT_EQ(callHook("AppDelegate", launch, "['app', 'options']"), log("1", "\"app\", nil"));
  EXPECT_EQ(callHook("AppDelegate", launch, "['app', 'options']", "{'" + asked + "': false}"),
            log("2", "\"app\", \"options\""));
  EXPECT_EQ(callHook("NoteList", "@24@0:8Q16-titleAtIndex:", "[4]"),
            "[original stringByAppendingString:@\"b\"]\norig(4)\n"
            "[original stringByAppendingString:@\"a\"]\n"
            "[original stringByAppendingString:@\"b\"]\n"
            "[original stringByAppendingString:@\"c\"]");
}

TEST_F(GeneratedCodeTest, TheSourceMapLeadsBack) {
  const std::pair<const char*, const char*> cases[] = {
      {"hookClass(\"AppSettings\"", "7:1 hookClass(\"A"},
      {"objc_send(NSDictionary, \"dic", "10:10 [NSDictionar"},
      {"dictionaryWithObjects", "nowhere"},  // inside of a token
      {"NSURL, \"URL", "10:49 NSURL URLWit"},
      {"arguments[0] = Math", "35:3 arguments[0]"},
      {"objc_orig(this, arguments, [app", "64:11 %orig(applic"},
      {"null]);\n\t\t}", "64:30 null);"},
      {"index % names", "74:69 index % name"}};
  for (const auto& [token, place] : cases) EXPECT_EQ(originOf(token), place) << token;
}

}  // namespace
}  // namespace tavlen
