#include <gmock/gmock.h>

#include "tests/cli/CommandTest.h"

namespace tavlen {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

using TypeCommandTest = CommandTest;

TEST_F(TypeCommandTest, AnswersEveryArgumentWithALine) {
  const Result result =
      run("type {CGRect={CGPoint=dd}{CGSize=dd}} [4i] [2[3i],i] ^? '' (U=if) list",
          {"@\"a\nb\x1B\xFF\"", "@\"a,b\"", "v24@0:8@16"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out,
            "struct CGRect { struct CGPoint { double field1; double field2; } field1; "
            "struct CGSize { double field1; double field2; } field2; }\n"
            "int[4]\nint[2][3]\nvoid (*)(void)\n\nunion U { int field1; float field2; }\nlong\n"
            "a\\nb\\x1b\xEF\xBF\xBD *\na,b *\nvoid\n");
  EXPECT_EQ(run("type -- -i --json").out, "void\nvoid\n");
  EXPECT_EQ(run("type").status, 2);
  EXPECT_EQ(run("type i --jsno").status, 2);
  EXPECT_THAT(run("type --help").out, HasSubstr("ENCODING..."));
}

TEST_F(TypeCommandTest, AnswersEveryLineOfTheInputWithALine) {
  const struct {
    std::string input;
    std::string answers;
  } rows[] = {
      {"", ""},
      {"\n", "\n"},
      {"i\n\nq", "int\n\nlong long\n"},
      {"{A=dd\r\n\r\n[4i]\n", "struct A { double field1; double field2; }\n\nint[4]\n"},
      {"-\n\xFF\n", "void\nvoid\n"},
      {"{A=" + std::string(100'000, '^') + "}\n*\n", ""},
  };
  for (const auto& [input, answers] : rows) {
    write("lines", input);
    setInput("lines");
    const Result result = run("type -");
    EXPECT_EQ(result.status, 0) << result.err;
    if (!answers.empty() || input.empty()) {
      EXPECT_EQ(result.out, answers);
    } else {
      EXPECT_THAT(result.out, testing::EndsWith("}\nchar *\n"));
    }
  }
  EXPECT_EQ(run("type -", {}, "/dev/full").status, 1);
}

TEST_F(TypeCommandTest, PrintsTreesAsJSON) {
  constexpr std::string_view kTrees =
      R"json([{"encoding":"^{A=\"x\"@\"N<P>\"\"y\"[2b3]}",)json"
      R"json("declaration":"const struct A { N<P> *x; unsigned int y[2]:3; } *",)json"
      R"json("qualifiers":"const","kind":"pointer","isFunction":false,"type":{"kind":"struct",)json"
      R"json("name":"A","fieldNames":["x","y"],"types":[{"encoding":"@\"N<P>\"",)json"
      R"json("kind":"object","name":"N","protocols":["P"],"isBlock":false},{"kind":"array",)json"
      R"json("count":2,"type":{"encoding":"b3","kind":"bitField","bits":3}}]}},null,)json"
      R"json({"encoding":"@?","declaration":"void (^)(void)","kind":"object","isBlock":true}])json"
      "\n";
  EXPECT_EQ(run("type --json", {"r^{A=\"x\"@\"N<P>\"\"y\"[2b3]}", "", "@?"}).out, kTrees);
  write("lines", "i\n\n(\xFF=}");
  setInput("lines");
  EXPECT_EQ(run("type --json -").out,
            "{\"encoding\":\"i\",\"declaration\":\"int\",\"kind\":\"basic\",\"name\":\"int\"}\n"
            "\n"
            "{\"encoding\":\"(\xEF\xBF\xBD=}\",\"declaration\":\"union \xEF\xBF\xBD { void field1; "
            "}\",\"kind\":\"union\",\"name\":\"\xEF\xBF\xBD\","
            "\"types\":[{\"encoding\":\"}\",\"kind\":\"basic\",\"name\":\"void\"}]}\n");
  // The deepest tree that there is.
  std::string deep;
  std::string ends;
  for (int i = 0; i < 250; ++i) {
    deep += "{X=";
    ends += "]}";
  }
  EXPECT_THAT(run("type --json " + deep + "*").out,
              EndsWith(R"({"encoding":"c","kind":"basic","name":"char"}})" + ends + "]\n"));
}

}  // namespace
}  // namespace tavlen
