#include "tavlen/foundation/javascript/JavaScriptContext.h"

#include <gmock/gmock.h>

#include "tests/support/TableFile.h"
#include "tests/support/Threads.h"

using namespace std::string_literals;

namespace tavlen {
namespace {

using Exceptions = JavaScriptValue::Exceptions;

JavaScriptValue run(JavaScriptContext& context, std::string_view script) {
  return context.evaluate(script, "file:///test.js");
}

std::string quietText(const JavaScriptValue& value, std::string_view property) {
  return value.property(property, Exceptions::ignore).text(Exceptions::ignore).value_or("nothing");
}

TEST(JavaScriptContext, TextCrossesUnharmedBothWays) {
  struct Case {
    std::string in;
    int length;
    std::string out;
  };
  const std::string replacement = "\xEF\xBF\xBD";
  const std::string big(1 << 20, 'x');
  const std::vector<Case> cases = {
      {"", 0, ""},
      {"a\0b\0"s, 4, "a\0b\0"s},
      {"\xC3\xA9\xF0\x9F\x98\x80", 3, "\xC3\xA9\xF0\x9F\x98\x80"},
      {"a\xFFz", 3, "a" + replacement + "z"},
      {"a\xED\xA0\x80", 4, "a" + replacement + replacement + replacement},
      {big, 1 << 20, big},
      {big + "\xE2\x82\xAC", (1 << 20) + 1, big + "\xE2\x82\xAC"}};
  const auto context = JavaScriptContext::make();
  run(*context, "function same(s) { return s } function length(s) { return s.length }");
  for (const Case& c : cases) {
    const JavaScriptValue text = context->string(c.in);
    EXPECT_TRUE(text.isString());
    EXPECT_EQ(context->globalObject().call("length", {text}).text(), std::to_string(c.length));
    EXPECT_EQ(context->globalObject().call("same", {text}).text(), c.out);
  }
  EXPECT_EQ(run(*context, "'a\\uD800b'").text(), "a" + replacement + "b");
  EXPECT_EQ(run(*context, "'\\uDC00\\uD83D'").text(), replacement + replacement);
  EXPECT_EQ(run(*context, "'\xC3\xA9\0'.length"s).text(), "2");
  EXPECT_EQ(run(*context, "({'n\\0m': 7})").property("n\0m"s).text(), "7");
  EXPECT_FALSE(context->exception());
}

TEST(JavaScriptContext, KindsAndTextsOfValues) {
  const auto kind = [](const JavaScriptValue& value) {
    return value.isUndefined() ? "undefined"
           : value.isString()  ? "string"
           : value.isObject()  ? "object"
                               : "other";
  };
  for (const auto& row : tableFrom("values.txt", 2)) {
    const auto context = JavaScriptContext::make();
    const auto expected = row.size() > 2 ? std::optional(row[2]) : std::nullopt;
    const JavaScriptValue value = run(*context, row[0]);
    EXPECT_EQ(kind(value), row[1]) << row[0];
    EXPECT_EQ(value.text(Exceptions::ignore), expected) << row[0];
    EXPECT_FALSE(context->exception()) << row[0];
    EXPECT_EQ(value.text(), expected) << row[0];
    EXPECT_EQ(context->exception().has_value(), !expected) << row[0];
  }
}

TEST(JavaScriptContext, SyntaxErrorsAndStacksNameTheScript) {
  const auto broken = JavaScriptContext::make();
  run(*broken, "var before = 1;\n[a b]");
  EXPECT_EQ(quietText(*broken->exception(), "name"), "SyntaxError");
  EXPECT_TRUE(broken->globalObject().property("before").isUndefined());

  const auto context = JavaScriptContext::make();
  run(*context, "\nfunction f() { throw new Error('m') }\nf()");
  EXPECT_THAT(quietText(*context->exception(), "stack"), testing::HasSubstr("file:///test.js:2:"));
}

TEST(JavaScriptContext, GlobalsOutliveAFailedLoad) {
  const auto context = JavaScriptContext::make();
  run(*context, "var made = {id(x) { return x }}; const hidden = 1; throw 'late'");
  const JavaScriptValue made = context->globalObject().property("made");
  EXPECT_TRUE(context->globalObject().property("hidden").isUndefined());
  EXPECT_EQ(made.call("id", {context->string("still")}).text(), "still");
  EXPECT_EQ(context->exception()->text(), "late");
}

TEST(JavaScriptContext, FirstExceptionStays) {
  const std::string object =
      "var o = {get bad() { throw 'getter' }, fail() { throw 'call' }, number: 5,"
      "         odd: {toString() { throw 'text' }}}; ";
  using Step = void (*)(const JavaScriptValue&);
  const std::vector<std::pair<Step, std::string>> steps = {
      {[](const JavaScriptValue& o) { EXPECT_TRUE(o.property("bad").isUndefined()); }, "getter"},
      {[](const JavaScriptValue& o) { EXPECT_TRUE(o.call("bad").isUndefined()); }, "getter"},
      {[](const JavaScriptValue& o) { EXPECT_TRUE(o.call("fail").isUndefined()); }, "call"},
      {[](const JavaScriptValue& o) { EXPECT_EQ(o.property("odd").text(), std::nullopt); }, "text"},
      {[](const JavaScriptValue& o) { EXPECT_TRUE(o.call("missing").isUndefined()); }, "TypeError"},
      {[](const JavaScriptValue& o) { o.property("missing").property("x"); }, "TypeError"},
      {[](const JavaScriptValue& o) {
         EXPECT_TRUE(run(o.context(), "throw 'script'").isUndefined());
       },
       "script"}};
  for (std::size_t first = 0; first < steps.size(); ++first) {
    const auto context = JavaScriptContext::make();
    run(*context, object);
    const JavaScriptValue o = context->globalObject().property("o");
    o.property("bad", Exceptions::ignore);
    o.property("odd").text(Exceptions::ignore);
    EXPECT_TRUE(o.call("number").isUndefined());
    ASSERT_FALSE(context->exception());
    for (std::size_t i = 0; i < steps.size(); ++i) {
      steps[(first + i) % steps.size()].first(o);
      EXPECT_THAT(*context->exception()->text(), testing::StartsWith(steps[first].second));
    }
  }
}

TEST(JavaScriptContext, CallPassesThisAndArguments) {
  const auto context = JavaScriptContext::make();
  const JavaScriptValue o = run(*context,
                                "({own: 'o', join(...a) { return this.own + a.length + a.join() },"
                                "  same(a, b) { return a === b }})");
  EXPECT_EQ(o.call("join").text(), "o0");
  EXPECT_EQ(o.call("join", {context->string("x"), run(*context, "[1, 2]")}).text(), "o2x,1,2");
  EXPECT_EQ(o.call("same", {o, o}).text(), "true");
  EXPECT_EQ(context->string("abc").call("toUpperCase").text(), "ABC");
  EXPECT_EQ(context->string("abc").property("length").text(), "3");
}

TEST(JavaScriptContext, ValuesOutliveTheirHandleAndTheCollector) {
  constexpr int kCount = 1000;
  auto context = JavaScriptContext::make();
  // The collector spares what it finds on the stack by chance, so the values lie on the heap.
  std::vector<JavaScriptValue> values;
  values.reserve(kCount);
  for (int i = 0; i < kCount; ++i) {
    const JavaScriptValue made = run(*context, "({text: 'v' + " + std::to_string(i) + "})");
    values.push_back(made);
    values.back() = JavaScriptValue(values.back());
  }
  run(*context, "throw {get message() { return 'first ' + 1 }}");
  run(*context, "throw 'second'");  // the engine itself holds on to the last one
  run(*context, "for (let i = 0; i < 300000; i++) ({text: 'garbage' + i})");
  context.reset();
  for (int i = 0; i < kCount; ++i) {
    ASSERT_EQ(values[static_cast<std::size_t>(i)].property("text").text(), "v" + std::to_string(i));
  }
  EXPECT_EQ(values[0].context().exception()->property("message").text(), "first 1");
}

TEST(JavaScriptContextDeathTest, ArgumentOfAnotherContextStopsTheProcess) {
  const auto one = JavaScriptContext::make();
  const auto other = JavaScriptContext::make();
  const JavaScriptValue foreign = other->string("x");
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(one->globalObject().call("eval", {foreign}), "to another context");
}

TEST(JavaScriptContext, OneAThread) {
  std::vector<std::string> results(4);
  inThreads(4, [&](int thread) {
    const auto context = JavaScriptContext::make();
    run(*context, "var sum = 0; function add(s) { sum += s.length; return sum }");
    for (int i = 0; i < 1000; ++i) {
      results[static_cast<std::size_t>(thread)] =
          *context->globalObject().call("add", {context->string("abc")}).text();
    }
  });
  EXPECT_THAT(results, testing::Each("3000"));
}

}  // namespace
}  // namespace tavlen
