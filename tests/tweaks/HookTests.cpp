#include "tavlen/tweaks/Hook.h"

#include <gtest/gtest.h>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/introspection/classes/ObjCClass.h"
#include "tavlen/tweaks/HookSource.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

Hook hookOn(std::string className, std::string selector,
            std::map<std::int64_t, Parameter> args = {}) {
  return Hook::with(std::move(className), std::move(selector), "@16@0:8", false, std::move(args));
}

TEST(Hook, IsStoredWithItsNameOnlyWhenItHasOne) {
  const std::map<std::int64_t, Parameter> args = {{0, NilParameter{}}, {-1, CodeParameter{"x"}}};
  Hook hook = Hook::with("A", "b:", "v24@0:8@16", true, args);
  const std::string plain =
      R"("className":"A","selector":"b:","signature":"v24@0:8@16","isClassMethod":true,)"
      R"("args":{"-1":{"type":"Code","code":"x"},"0":{"type":"Nil"}}})";
  EXPECT_EQ(encodeJSON(hook), "{" + plain);
  EXPECT_EQ(decodeJSON<Hook>(R"({"customName":null,)" + plain), hook);
  hook.customName = "";
  EXPECT_EQ(encodeJSON(hook), R"({"customName":"",)" + plain);
  EXPECT_EQ(decodeJSON<Hook>(encodeJSON(hook)), hook);
  EXPECT_EQ(hook.args(), args);
  EXPECT_EQ(hook.transpilerKey(), "v24@0:8@16+b:");
  EXPECT_EQ(hook.identity(), (MethodIdentity{"A", "b:", true}));
}

TEST(Hook, IsMadeOfAMethodAndGivesItBack) {
  const ObjCMethod method("b:", "v24@0:8@16", true);
  const ObjCClass cls("A", {}, "mangled", "Super", "/path", {"P"});
  const std::map<std::int64_t, Parameter> args{{0, NilParameter{}}};
  const Hook hook = Hook::with(cls, method, args);
  EXPECT_EQ(hook, Hook::with("A", "b:", "v24@0:8@16", true, args));
  EXPECT_EQ(*hook.method(), method);
  EXPECT_NE(hook.method(), hook.method());
}

TEST(HookSource, RendersOneFunctionAHook) {
  const CodeParameter value{"v"};
  const std::pair<std::map<std::int64_t, Parameter>, const char*> cases[] = {
      {{}, "function() {\n\t\treturn %orig;\n\t}"},
      {{{-1, value}}, "function() {\n\t\t%orig;\n\t\treturn v;\n\t}"},
      {{{0, value}, {-1, value}},
       "function() {\n\t\targuments[0] = v;\n\t\t%orig;\n\t\treturn v;\n\t}"},
      {{{10, value}, {2, value}, {-7, value}},
       "function() {\n\t\targuments[-7] = v;\n\t\targuments[2] = v;\n\t\targuments[10] = "
       "v;\n\t\treturn %orig;\n\t}"}};
  for (const auto& [args, text] : cases) EXPECT_EQ(objsFunc(hookOn("A", "b", args)), text);
  EXPECT_EQ(keyedOBJSFunc(hookOn("A", "say:\"/\\")),
            "\t\"@16@0:8-say:\\\"\\/\\\\\": function() {\n\t\treturn %orig;\n\t},");
}

TEST(HookSource, RendersOneBlockAClassInTheOrderOfTheirNames) {
  EXPECT_EQ(generateHookSource({}).text, "");
  const std::vector<Hook> hooks = {hookOn("Zed", "z"), hookOn("Ärger", "a"), hookOn("Bee", "b"),
                                   hookOn("Zed", "y"), hookOn("bee", "c")};
  const std::string body = ": function() {\n\t\treturn %orig;\n\t},";
  const HookSource source = generateHookSource(hooks);
  EXPECT_EQ(source.text, "hookClass(\"Bee\", {}, {\n\t\"@16@0:8-b\"" + body + "\n});\n\n" +
                             "hookClass(\"Zed\", {}, {\n\t\"@16@0:8-z\"" + body +
                             "\n\t\"@16@0:8-y\"" + body + "\n});\n\n" +
                             "hookClass(\"bee\", {}, {\n\t\"@16@0:8-c\"" + body + "\n});\n\n" +
                             "hookClass(\"Ärger\", {}, {\n\t\"@16@0:8-a\"" + body + "\n});");
  std::vector<std::size_t> order;
  for (const HookSource::Entry& entry : source.entries) {
    order.push_back(entry.hook);
    EXPECT_EQ(source.text.substr(entry.begin, entry.end - entry.begin),
              keyedOBJSFunc(hooks[entry.hook]));
  }
  EXPECT_EQ(order, (std::vector<std::size_t>{2, 0, 3, 4, 1}));
}

TEST(HookSource, TheFirstFailureOfTheListIsReported) {
  const std::vector<Hook> hooks = {
      hookOn("Name \xFF", "fine"),
      hookOn("Zed", "z", {{0, ValueParameter<std::string>{"first \xFF"}}}),
      hookOn("Ant", "a", {{0, ValueParameter<std::string>{"second \xFF"}}})};
  const auto failure = [&](std::size_t count) {
    return messageOf<EncodingError>([&] { generateHookSource(std::span(hooks).first(count)); });
  };
  EXPECT_EQ(failure(3), "Could not represent first \uFFFD as JSON");
  EXPECT_EQ(failure(1), "Could not represent Name \uFFFD as JSON");
}

}  // namespace
}  // namespace tavlen
