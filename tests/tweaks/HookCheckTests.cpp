#include "tavlen/tweaks/HookCheck.h"

#include <gtest/gtest.h>

#include "tavlen/foundation/json/JSONDecoder.h"

namespace tavlen {
namespace {

/// The places and texts of all problems, one a line.
std::string problemsOf(const std::string& signature, const std::string& selector,
                       const std::string& args) {
  Hook hook = Hook::with("A", selector, signature, false, {});
  hook._args = decodeJSON<std::map<std::int64_t, ParameterContainer>>(args);
  std::string text;
  for (const HookProblem& problem : tavlen::problemsOf(hook))
    text += documentPath(hook, problem.place) + ": " + problem.text + "\n";
  return text;
}

/// The text of the only problem of a value for a type; empty if there is none.
std::string problemOf(const std::string& type, const std::string& json) {
  const std::string place = "args.-1: ";
  const std::string text = problemsOf(type + "16@0:8", "a", R"({"-1":)" + json + "}");
  return text.empty() ? text : text.substr(place.size(), text.size() - place.size() - 1);
}

std::string valueJSON(const std::string& type, const std::string& value) {
  return R"({"type":"_ValueParameter<)" + type + R"(>","value":)" + value + "}";
}

const std::string kNil = R"({"type":"Nil"})";
const std::string kSelector = R"({"type":"Selector","name":"a"})";

TEST(HookCheck, ValuesAreHeldAgainstTheirTypes) {
  const auto integer = [](const std::string& value) { return valueJSON("Int64", value); };
  const auto real = [](const std::string& value) { return valueJSON("Double", value); };
  const std::string text = valueJSON("String", R"("a")");
  const std::string yes = valueJSON("Bool", "true");
  const struct {
    std::string types;  ///< divided by blanks
    std::string json;
    std::string problem;
  } cases[] = {
      {"B", text, "a text for a Boolean"},
      {"rB B @ c C", yes, ""},
      {"q i d", yes, "a Boolean for "},
      {"B c Q d @ D", integer("1"), ""},
      {"B", integer("2"), "2 is out of range; the type holds 0 to 1"},
      {"c rc", integer("-129"), "-129 is out of range; the type holds -128 to 127"},
      {"S", integer("65536"), "65536 is out of range; the type holds 0 to 65535"},
      {"i l", integer("2147483648"),
       "2147483648 is out of range; the type holds -2147483648 to 2147483647"},
      {"C I L Q T", integer("-1"), "-1 is out of range"},
      {"q", valueJSON("UInt64", "9223372036854775808"),
       "9223372036854775808 is out of range; the type holds -9223372036854775808 to "
       "9223372036854775807"},
      {"q Q d", integer("9007199254740992"), ""},
      {"q Q @", integer("9007199254740993"), "9007199254740993 is beyond 2^53"},
      {"q", integer("-9223372036854775808"), "-9223372036854775808 is beyond 2^53"},
      {"q", real("1e15"), ""},
      {"I", real("-1"), "-1.0 is out of range"},
      {"q", real("0.5"), "0.5 is not a whole number"},
      {"f", real("1e39"), "1e+39 is out of range of a float"},
      {"d f @", real("1e38"), ""},
      {"{CGPoint=dd} (a=id)", kNil, "a constant for a structure, which only code can make"},
      {"{CGPoint=dd} B @? : ?", R"({"type":"Code","code":"x"})", ""},
      {"@ # : * ^v @?", kNil, ""},
      {"B q d", kNil, "nil for "},
      {": ", text, "a text for a selector"},
      {"@ *", text, ""},
      {"# @? ^v q", text, "a text for "},
      {":", kSelector, ""},
      {"@ #", kSelector, "a selector for "},
      {"# @", R"({"type":"Class","name":"a"})", ""},
      {"v", kNil, "the method returns nothing"},
      {"?", text, ""},
  };
  for (const auto& [types, json, problem] : cases) {
    for (std::size_t begin = 0; begin < types.size();) {
      const std::size_t end = std::min(types.find(' ', begin), types.size());
      const std::string type = types.substr(begin, end - begin);
      const std::string found = problemOf(type, json);
      EXPECT_EQ(problem.empty() ? found : found.substr(0, problem.size()), problem) << type << json;
      begin = end + 1;
    }
  }
}

TEST(HookCheck, PlacesLeadToTheValue) {
  const std::string big = valueJSON("Int64", "9007199254740993");
  EXPECT_EQ(problemsOf("v24@0:8B16", "a:b:",
                       R"({"-2":)" + kNil + R"(,"0":{"type":"Array","items":[)" + kNil +
                           R"(,{"type":"Dictionary","items":[{"key":)" + big + R"(,"value":)" +
                           kSelector + R"(}]}]},"2":)" + kNil + "}"),
            "signature: \"v24@0:8B16\" has 1 argument, the selector \"a:b:\" takes 2\n"
            "args.-2: the method has no such argument\n"
            "args.0: an array for a Boolean\n"
            "args.0.items[1].items[0].key: 9007199254740993 is beyond 2^53, and generated code may "
            "round it; use code instead\n"
            "args.0.items[1].items[0].value: a selector for an object\n"
            "args.2: the method has no such argument\n");
  EXPECT_EQ(problemsOf("v@", "a", R"({"7":)" + kNil + "}"),
            "signature: \"v@\" is not a method's type encoding\n");
}

}  // namespace
}  // namespace tavlen
