#include "tavlen/tweaks/TweakProcessor.h"

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/tweaks/HookSource.h"
#include "tavlen/tweaks/Manifest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using namespace std::string_literals;
using Error = TweakProcessor::Error;

/// A transpiler whose method has this body; `source` is its argument, `calls` counts its calls.
std::string transpiler(const std::string& body) {
  return "var calls = 0; var OBJSTranspiler = { transpile(source) { calls += 1; " + body + " } };";
}

class TweakProcessorTest : public testing::Test {
 protected:
  TweakProcessor processorOf(const std::string& script) const {
    folder_.write("ob.js", script);
    return TweakProcessor(folder_.path());
  }
  static std::string errorOf(TweakProcessor& processor, const std::string& source = "x") {
    std::string code;
    const auto error = thrown<Error>([&] { code = processor.convert(source).code; });
    return error ? error->description() : "none: " + code;
  }
  std::string errorOfBody(const std::string& body) const {
    TweakProcessor processor = processorOf(transpiler(body));
    return errorOf(processor);
  }

  const TemporaryFolder folder_;
};

TEST_F(TweakProcessorTest, GivesTheTranspilerTheHooksAndTheScript) {
  TweakProcessor processor = processorOf(transpiler("return { code: source, map: '' };"));
  const std::string hook =
      R"({"className":"A","selector":"a","signature":"v16@0:8","isClassMethod":false,"args":{}})";
  const std::string generated =
      "hookClass(\"A\", {}, {\n\t\"v16@0:8-a\": function() {\n\t\treturn %orig;\n\t},\n});";
  const struct {
    std::string hooks;
    std::optional<std::string> script;
    std::string source;
  } cases[] = {{"", std::nullopt, ""},
               {"null", "", ""},
               {hook, std::nullopt, generated + "\n\n"},
               {"", "\xEF\xBB\xBF\n\nscript();", "\n\nscript();"},
               {"null," + hook, "a\0\r\n😀"s, generated + "\n\na\0\r\n😀"s}};
  int count = 0;
  for (const auto& c : cases) {
    const std::string name = std::to_string(count++);
    folder_.write(
        name + "/Manifest.json",
        R"({"configuration":{"name":"","color":"darkRed","bundleID":""},"overrides":[],"hooks":[)" +
            c.hooks + "]}");
    if (c.script) folder_.write(name + "/script.objs", *c.script);
    EXPECT_EQ(processor.process(*TweakFile::at(folder_.path() / name)).code, c.source);
  }
  const auto gone = TweakFile::at(folder_.path() / "0");
  fs::remove(folder_.path() / "0/Manifest.json");
  EXPECT_THROW(processor.process(*gone), TweakFile::Error);
  const Hook broken = Hook::with("A", "a", "v", false, {{0, ValueParameter<std::string>{"\xFF"}}});
  EXPECT_THROW(TweakProcessor::generateCode(std::vector{broken}), EncodingError);
}

TEST_F(TweakProcessorTest, TextSurvivesBothWays) {
  TweakProcessor processor = processorOf(
      transpiler("return { code: source + source.length, map: '\\0\\u{1F600}' + source[0] };"));
  const TweakProcessor::Output output = processor.convert("😀\0é"s);
  EXPECT_EQ(output.code, "😀\0é4"s);
  EXPECT_EQ(output.map, "\0😀\xEF\xBF\xBD"s) << "half of a pair is no character";
}

TEST_F(TweakProcessorTest, ReportsWhatWasThrown) {
  for (const char* thing :
       {"5", "Symbol('s')", "null", "undefined", "new Proxy({}, { get() { throw 1; } })",
        "{ get name() { throw 1; }, get message() { throw 2; }, get stack() { throw 3; } }",
        "new String('object')",
        "{ name: Symbol(), message: { toString() { throw 1; } }, stack: Symbol() }"}) {
    EXPECT_EQ(errorOfBody("throw " + std::string(thing)), "undefined: undefined") << thing;
  }
  const std::pair<const char*, const char*> reasons[] = {
      {"{}", "a value that is no error was thrown"},
      {"{ name: 'N' }", "N"},
      {"{ message: 'm' }", "m"},
      {"'undefined'", "undefined"},
      {"new SyntaxError('s')", "SyntaxError: s"}};
  for (const auto& [thing, reason] : reasons) {
    TweakProcessor thrower = processorOf(transpiler("throw " + std::string(thing)));
    EXPECT_EQ(thrown<Error>([&] { thrower.convert(""); }).value().reason(), reason);
  }
  EXPECT_EQ(errorOfBody("throw 'te\\u{1F600}xt';"), "te😀xt");
  EXPECT_EQ(errorOfBody("throw { name: 'N', message: null };"), "N: null");
  EXPECT_EQ(errorOfBody("throw { name: 1, message: [2, 3], stack: 's\\n2' };"),
            "1: 2,3\n\nCall stack:\ns\n2");
  TweakProcessor processor = processorOf(transpiler("throw new SyntaxError('Unexpected token');"));
  const Error error = thrown<Error>([&] { processor.convert(""); }).value();
  EXPECT_EQ(error.which(), Error::Case::jsException);
  EXPECT_EQ(error.name() + "/" + error.message(), "SyntaxError/Unexpected token");
  EXPECT_TRUE(error.stack().value().find("transpile@ob.js:1") != std::string::npos);
  EXPECT_EQ(error.description(), "SyntaxError: Unexpected token\n\nCall stack:\n" + *error.stack());
  EXPECT_EQ(errorOfBody("return transpile2();").substr(0, 16), "ReferenceError: ");
  EXPECT_EQ(errorOfBody("return (function f() { f(); })();").substr(0, 12), "RangeError: ");
}

TEST_F(TweakProcessorTest, AResultOfAnotherShapeIsInvalid) {
  const char* bodies[] = {"",
                          "return null;",
                          "return 'code';",
                          "return 5;",
                          "return [];",
                          "return {};",
                          "return { code: '' };",
                          "return { map: '' };",
                          "return { code: '', map: 5 };",
                          "return { code: new String(''), map: '' };",
                          "return { code: '', map: {} };",
                          "return Promise.resolve({ code: '', map: '' });",
                          "return { get code() { throw new Error('late'); }, map: '' };"};
  for (const char* body : bodies) {
    EXPECT_EQ(errorOfBody(body), "Transpiler output was not a String") << body;
  }
  EXPECT_EQ(errorOfBody("function f() {} f.code = 'c'; f.map = ''; return f;"), "none: c");
  EXPECT_EQ(errorOfBody("return { __proto__: { code: 'p', map: '' } };"), "none: p");
  TweakProcessor processor =
      processorOf(transpiler("return calls == 1 ? 5 : { code: '' + calls, map: '' };"));
  EXPECT_EQ(errorOf(processor), "Transpiler output was not a String");
  EXPECT_EQ(errorOf(processor), "none: 2");
}

TEST_F(TweakProcessorTest, AMapThatIsLeftOutIsNotMadeButMustBeThere) {
  const auto output = [&](const std::string& result) {
    TweakProcessor processor = processorOf(transpiler("return { code: 'c'" + result + " };"));
    const auto made = processor.convert("", TweakProcessor::Map::leaveOut);
    return made.code + made.map;
  };
  EXPECT_EQ(output(", get map() { throw new Error('made'); }"), "c");
  EXPECT_EQ(output(", map: 'm'"), "c");
  for (const char* result : {"", ", map: 5", ", set map(value) {}"})
    EXPECT_THROW(output(result), Error) << result;
}

TEST_F(TweakProcessorTest, TheFirstExceptionIsReportedForEver) {
  // The thrown object shows how often transpile was called until now.
  const std::string first = "{ name: 'First', get message() { return calls; } }";
  TweakProcessor processor = processorOf(transpiler("if (calls == 2) throw " + first +
                                                    "; if (calls == 3) throw new Error('third'); "
                                                    "return { code: '' + calls, map: '' };"));
  EXPECT_EQ(errorOf(processor), "none: 1");
  EXPECT_EQ(errorOf(processor), "First: 2");
  EXPECT_EQ(errorOf(processor), "First: 3");
  EXPECT_EQ(errorOf(processor), "First: 4");
  TweakProcessor failsToLoad = processorOf(transpiler("return { code: '', map: '' };") +
                                           "throw { name: 'L', message: 'm' };");
  EXPECT_EQ(errorOf(failsToLoad), "L: m");
  EXPECT_EQ(errorOf(failsToLoad), "L: m");
}

TEST_F(TweakProcessorTest, ATranspilerWithoutItsMethodIsAnError) {
  for (const char* script :
       {"var OBJSTranspiler = null;", "var OBJSTranspiler = 5;", "var OBJSTranspiler = {};"}) {
    TweakProcessor processor = processorOf(script);
    EXPECT_EQ(errorOf(processor).substr(0, 11), "TypeError: ") << script;
  }
}

TEST_F(TweakProcessorTest, TheScriptFileMustBeReadable) {
  EXPECT_THROW(TweakProcessor(folder_.path()), std::system_error);
  EXPECT_THROW(TweakProcessor(folder_.path() / "nowhere"), std::system_error);
  fs::create_directories(folder_.path() / "sub/ob.js");
  EXPECT_THROW(TweakProcessor(folder_.path() / "sub"), std::system_error);
  EXPECT_THROW(processorOf("// \xFF"), std::system_error);
}

using TweakProcessorDeathTest = TweakProcessorTest;

TEST_F(TweakProcessorDeathTest, AScriptWithoutItsGlobalStopsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string line =
      "^tavlen: fatal: the transpiler script \"ob.js\" does not define OBJSTranspiler\n$";
  for (const char* script :
       {"", "syntax error", "const OBJSTranspiler = {};",
        "Object.defineProperty(this, 'OBJSTranspiler', { get() { throw 1; } })"}) {
    EXPECT_DEATH(processorOf(script), line) << script;
  }
}

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

  std::string run(const std::string& script, const char* name = "test") {
    const std::string text = context_->evaluate(script, name).text().value_or("");
    if (const auto exception = context_->exception()) ADD_FAILURE() << *exception->text();
    return text;
  }
  std::string callHook(const char* className, const char* key, const std::string& args) {
    return run(std::string("callHook('") + className + "', '" + key + "', " + args + ", {})");
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
       "original\norig(-3, 9007199254740991, 0.1)"},
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

}  // namespace
}  // namespace tavlen
