// What scripts can do: each body is that of a hook of -[Answers answer:].
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/loader/LoadedTweak.h"

namespace tavlen::loader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Answer {
  std::string text;
  std::vector<std::string> mistakes;
};

/// The texts with the name of the hooked class.
std::vector<std::string> replaced(std::vector<std::string> texts, const std::string& cls) {
  for (std::string& text : texts) {
    for (std::size_t at = text.find(cls); at != std::string::npos; at = text.find(cls))
      text.replace(at, cls.size(), "Answers");
  }
  return texts;
}

/// Hooks the method with the body, which begins in column 1 of line 2, and calls it.
Answer answerOf(const std::string& body) {
  const std::string cls = makeClass("Answers");
  const LoadedTweak tweak("const methods = {'@24@0:8@16-answer:': function(argument) {\n" + body +
                          "\n}};\nhookClass('" + cls + "', {}, methods);");
  const ObjCRuntime::AutoreleasePool pool;
  id answer = ObjCRuntime::send(make(cls), "answer:", ObjCRuntime::makeString("argument"));
  return {ObjCRuntime::text(ObjCRuntime::send(answer, "description")).value_or("nil"),
          replaced(tweak.events.of(LoaderEvent::kMistake), cls)};
}

TEST(LoaderScript, Answers) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"return 'text \\ud83d\\ude00'", "text \xF0\x9F\x98\x80"},
      {"return null", "nil"},
      {"return argument", "argument"},
      {"return %orig", "original"},
      {"return [%orig stringByAppendingString:argument]", "originalargument"},
      {"argument = 'other'; return [@[argument, 1.5, true, null] componentsJoinedByString:' ']",
       "other 1.5 1 <null>"},
      {"return @{@'key': @[1, @{}]}", "{key = (1, {}); }"},
      {"return @9007199254740991", "9007199254740991"},
      {"return @(18446744073709551615n)", "18446744073709551615"},
      {"return '' + (this === [this self]) + ([this superclass] === Answers)", "truetrue"},
      {"return 'n' + @5 + ' ' + (@5 + 1) + ' ' + @'s' + ' ' + Answers + ' ' + @selector(a:b:)",
       "n5 6 s Answers a:b:"},
      {"return [NSString stringWithFormat:'%@ %d %5.2f %s %lu %c%%', @[1], -1, 0.5, 'c', 7, 65]",
       "(1) -1  0.50 c 7 A%"},
      {"return [NSArray arrayWithObjects:'a', 1, null]", "(a, 1)"},
      {"return [NSArray arrayWithObjects:'a', 'no end']", "(a, \"no end\")"},
      {"return [[NSArray arrayWithObjects:'a'] description] + [NSSet setWithObjects:'b']",
       "(a)(b)"},
      {"return [[NSString alloc] initWithFormat:'%d %@' locale:null, 4, 'x']", "4 x"},
      {"return [@[argument] filteredArrayUsingPredicate:[NSPredicate predicateWithFormat:'%K == "
       "%@' "
       "argumentArray:@[@'self', argument]]]",
       "(argument)"},
      {"return [@[argument, @'b'] filteredArrayUsingPredicate:[NSPredicate "
       "predicateWithFormat:'%K == %d', 'length', 1]]",
       "(b)"},
      {"return @([this sum:3, 1, 2, 3])", "6"},
      {"return @([this respondsToSelector:@selector(answer:)] == true)", "1"},
      {"return loadFunc('NSStringFromClass', '@#')(Answers)", "Answers"},
      {"return loadFunc('NSClassFromString', '@@')('NSObject')", "NSObject"},
      {"return [null foo:1] === null ? 'nil' : 'none'", "nil"},
      {"try { [@[] objectAtIndex:4] } catch (e) { return [e.exception name] }", "NSRangeException"},
      {"return [Answers, Lengths, Answers].map(c => [[[Forwarding alloc] initWithClass:c] "
       "forward:'on']).join()",
       "on,2,on"},
      {"return resourcesPath", "/resources"},
      {"return [[NSString alloc] initWithString:'made']", "made"},
      {"const r = [[@'abc' substringFromIndex:1] rangeOfString:'c']; return r.location + ' ' + "
       "r.length",
       "1 1"},
      {"return [NSStringFrom = 'a', 'b'].join()", "a,b"},
      {"return @([this notFound] === 9223372036854775807n)", "1"},
      {"let sum = 0; [@[1, 2, 3] enumerateObjectsUsingBlock:objc_block('v@Q^v', (object, index) => "
       "{ "
       "sum += object * index })]; return '' + sum",
       "8"},
      {"return [[@[3, 1, 2] sortedArrayUsingComparator:objc_block('q@@', (a, b) => Math.sign(a - "
       "b))] "
       "componentsJoinedByString:' ']",
       "1 2 3"},
      {"return objc_block('d{CGPoint=dd}f', (p, f) => p.x * p.y + f)([2, 3], 0.5) + ''", "6.5"},
      {"try { objc_block('v', () => [this raise])() } catch (e) { return [e.exception name] }",
       "NSRangeException"},
      {"return @([this same:9007199254740993n] === 9007199254740993n)", "1"},
  };
  for (const auto& [body, expected] : cases) {
    const Answer answer = answerOf(body);
    EXPECT_EQ(answer.text, expected) << body;
    EXPECT_THAT(answer.mistakes, IsEmpty()) << body;
  }
}

TEST(LoaderScript, AMistakeIsReportedAndTheOriginalAnswers) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"return missing", "2:8 -[Answers answer:]: ReferenceError: Can't find variable: missing"},
      {"\n  throw 'text'", "1:40 -[Answers answer:]: \"text\""},
      {"return {a: 1}", "1:40 -[Answers answer:]: the result: expected an object, got {\"a\":1}"},
      {"return", "1:40 -[Answers answer:]: the result: it returned undefined"},
      {"[this absent]", "2:1 -[Answers answer:]: -[Answers absent]: there is no such method"},
      {"[undefined foo]", "2:1 -[Answers answer:]: the message foo has the receiver undefined"},
      {"[this answer]", "2:1 -[Answers answer:]: -[Answers answer]: there is no such method"},
      {"objc_send(this, 'answer:')", "2:1 -[Answers answer:]: answer: takes 1 arguments, not 0"},
      {"[this same:-1]",
       "2:1 -[Answers answer:]: argument 1: expected a whole number from 0 of 64 bits, got -1"},
      {"[this depth:2147483648]",
       "2:1 -[Answers answer:]: argument 1: expected a whole number of 32 bits, got 2147483648"},
      {"[this depth:'text']",
       "2:1 -[Answers answer:]: argument 1: expected a whole number, got \"text\""},
      {"[this release]",
       "2:1 -[Answers answer:]: release: references are counted by the loader, not by scripts"},
      {"[NSString stringWithFormat:'%@ %@', 1]",
       "2:1 -[Answers answer:]: the format wants 2 arguments, not 1"},
      {"[NSException raise:'X' format:'%s %%']",
       "2:1 -[Answers answer:]: the format wants 1 arguments, not 0"},
      {"[[NSString alloc] initWithFormat:'%d' locale:null]",
       "2:1 -[Answers answer:]: the format wants 1 arguments, not 0"},
      {"%orig(1, 2)", "2:1 -[Answers answer:]: %orig passes 2 arguments of 1"},
      {"(function() { return %orig }).call(this)",
       "2:22 -[Answers answer:]: %orig is in a function that is no hook"},
      {"loadFunc('absentFunction', 'v')()",
       "2:1 -[Answers answer:]: loadFunc: the program has no function absentFunction"},
      {"const a = []; a[0] = a; @(a)",
       "2:25 -[Answers answer:]: an array is nested too deeply to be boxed"},
      {"return new Array(4e9)",
       "1:40 -[Answers answer:]: the result: an array has more than 1000000 elements"},
      {"[this sum:0, ...new Array(80).fill(1)]",
       "2:1 -[Answers answer:]: more than 64 arguments cannot be passed"},
      {"[[NSAutoreleasePool alloc] init]",
       "2:2 -[Answers answer:]: +[NSAutoreleasePool alloc]: scripts make no autorelease pools"},
      {"return [Unheld alloc]", "1:40 -[Answers answer:]: the result: NSRangeException: not held"},
      {"objc_block('v', () => absent)(); return %orig",
       "2:23 : a block: ReferenceError: Can't find variable: absent"},
      {"if (objc_block('i', () => 'text')() === 0) return %orig",
       "2:21 : a block: the result: expected a whole number, got \"text\""},
      {"objc_block('v(?=if)', () => 0)",
       "2:1 -[Answers answer:]: objc_block: a union (?=if) cannot be passed"},
      {"objc_block('v', 1)",
       "2:1 -[Answers answer:]: objc_block: expected the types of a block and a function"},
      {"return Absent", "2:8 -[Answers answer:]: ReferenceError: the program has no class Absent"},
  };
  for (const auto& [body, expected] : cases) {
    const Answer answer = answerOf(body);
    EXPECT_EQ(answer.text, "original") << body;
    EXPECT_THAT(answer.mistakes, ElementsAre(expected)) << body;
  }
}

TEST(LoaderScript, AMistakeIsReportedOnceForEachMethodAndPlace) {
  constexpr int kMost = 1000;
  std::vector<std::string> classes;
  std::string names;
  for (int i = 0; i <= kMost + 1; ++i) {
    classes.push_back(makeClass("Answers"));
    names += "'" + classes.back() + "',";
  }
  const LoadedTweak tweak("let calls = 0; for (const name of [" + names +
                          "]) hookClass(name, {}, {'@24@0:8@16-answer:': function() {"
                          "throw new Error('call ' + calls++); }});");
  const ObjCRuntime::AutoreleasePool pool;
  for (const std::string& cls : classes) {
    id object = make(cls);
    for (int call = 0; call < 2; ++call) ObjCRuntime::send(object, "answer:", id());
  }
  const auto mistakes = tweak.events.of(LoaderEvent::kMistake);
  ASSERT_EQ(mistakes.size(), kMost + 1);
  EXPECT_THAT(mistakes[kMost - 1], testing::HasSubstr(classes[kMost - 1] + " answer:]"));
  EXPECT_EQ(mistakes.back(), "0:0 : further mistakes are not shown");
}

TEST(LoaderScript, ARejectedPromiseIsReportedOnceUnlessItsErrorIsTakenUp) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"async function f() { return absent } f(); f(); return %orig",
       "2:29 : a promise was rejected: ReferenceError: Can't find variable: "
       "absent"},
      {"(async () => { await null; [this absent] })(); return %orig",
       "2:28 : a promise was rejected: -[Answers absent]: there is no such "
       "method"},
      {"Promise.resolve(1).then(() => { throw 'text' }); return %orig",
       "0:0 : a promise was rejected: \"text\""},
      {"(async () => [this raise])(); return %orig",
       "2:14 : a promise was rejected: NSRangeException: beyond"},
      {"(async () => absent)().catch(() => {}); return %orig", nullptr},
  };
  for (const auto& [body, expected] : cases) {
    const Answer answer = answerOf(body);
    EXPECT_EQ(answer.text, "original") << body;
    if (expected == nullptr)
      EXPECT_THAT(answer.mistakes, IsEmpty());
    else
      EXPECT_THAT(answer.mistakes, ElementsAre(expected));
  }
  const LoadedTweak tweak("1;\nPromise.reject(Error('outside'));");
  EXPECT_THAT(tweak.events.of(LoaderEvent::kMistake),
              ElementsAre("2:16 : a promise was rejected: outside"));
}

TEST(LoaderScript, WhatCannotBeHookedIsRefusedAndTheRestIsHooked) {
  const LoadedTweak tweak(R"(hookClass("Answers", {}, {
  "@16@0:8-absent": function() {},
  "d20@0:8i16-depth:": function() {},
  "(?=if)16@0:8-notFound": function() {},
  "v16@0:8-raise": function() {},
  "@16@0:8+shared": function() { return 'hooked' },
});
hookClass("NSAutoreleasePool", {}, {"@16@0:8+new": function() {}});
hookClass("Late", {}, {"i16@0:8-half:": function() {}});
hookClass("Answers", {}, {nonsense: 1});)");
  EXPECT_THAT(
      tweak.events.of(LoaderEvent::kRefused),
      ElementsAre(
          "2:3 -[Answers absent]: the class has no such method",
          "3:3 -[Answers depth:]: the method's types are i20@0:8i16, and the hook's d20@0:8i16",
          "4:3 -[Answers notFound]: a union (?=if) cannot be passed",
          "5:3 -[Answers raise]: the method's types are @16@0:8, and the hook's v16@0:8",
          "8:37 +[NSAutoreleasePool new]: methods of autorelease pools cannot be hooked"));
  EXPECT_THAT(tweak.events.of(LoaderEvent::kWaiting),
              ElementsAre("9:24 -[Late half:]: no image has the class Late"));
  EXPECT_THAT(
      tweak.events.of(LoaderEvent::kMistake),
      ElementsAre(
          "10:1 : hookClass: the key \"nonsense\" is not a type encoding, - or +, and a selector"));
  const ObjCRuntime::AutoreleasePool pool;
  EXPECT_EQ(ObjCRuntime::text(ObjCRuntime::send(ObjCRuntime::classNamed("Answers"), "shared")),
            "hooked");
}

}  // namespace
}  // namespace tavlen::loader
